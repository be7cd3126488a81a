#pragma once

#include <QList>
#include <QString>

class QWidget;

/// Finds the program's widgets by selectors.
///
/// A selector is one or more steps separated by blanks. A step is an object name or a class, with
/// an index if several widgets match: "QLineEdit[2]" is the third. A step searches among the
/// children of the step before it: "bodyWidget QLineEdit[0]".
///
/// Widgets are counted in reading order: visible ones before hidden ones, the front window before
/// those behind it, from top to bottom and from left to right.
class WidgetFinder
{
public:
    /// The widget that a selector names. Null when there is none; `error` then says why.
    static QWidget* Find(const QString& selector, QString* error);

    /// All widgets that the last step of a selector matches; its index is ignored. An empty
    /// selector matches every widget.
    static QList<QWidget*> FindAll(const QString& selector, QString* error);
};
