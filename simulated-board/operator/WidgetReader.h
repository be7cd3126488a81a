#pragma once

#include <QImage>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

class QWidget;

/// Reads what the program's widgets show.
class WidgetReader
{
public:
    /// The text that a widget shows. Knows labels, fields, views, boxes, and the chosen tab or
    /// item.
    static QString Text(const QWidget* widget);

    /// The value of a property; undefined when the widget has no such property.
    static QJsonValue Property(const QWidget* widget, const QString& name);

    /// The texts to choose from in a combo box, a tab bar or a list.
    static QJsonArray Items(const QWidget* widget);

    /// The rows of a table, each with the texts of its cells; undefined when it is not a table.
    static QJsonValue Cells(const QWidget* widget);

    /// Class, name, position in its window, state and text.
    static QJsonObject Describe(const QWidget* widget);

    /// The whole screen: every visible window, painted at its position.
    static QImage PaintScreen();
};
