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
    /// The text that a widget shows: of a label, a field, a view, the tab or item chosen, a box.
    static QString Text(const QWidget* widget);

    /// The value of a property; undefined where the widget has none of that name.
    static QJsonValue Property(const QWidget* widget, const QString& name);

    /// The texts to choose from: of a combo box, a tab bar, a list.
    static QJsonArray Items(const QWidget* widget);

    /// The rows of a table, each the texts of its cells; undefined where it is no table.
    static QJsonValue Cells(const QWidget* widget);

    /// Class, name, place in its window, state and text.
    static QJsonObject Describe(const QWidget* widget);

    /// The whole screen: every window that is shown, painted at its place.
    static QImage PaintScreen();
};
