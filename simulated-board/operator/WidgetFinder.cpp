#include "simulated-board/operator/WidgetFinder.h"

#include <QApplication>
#include <QRegularExpression>
#include <QWidget>

#include <algorithm>
#include <tuple>

namespace
{

struct Step {
    QString name;
    int index = 0;
};

bool ReadSteps(const QString& selector, QList<Step>& steps)
{
    static const QRegularExpression form(R"(^([^\[\]\s]+)(?:\[(\d{1,6})\])?$)");
    const QStringList words = selector.simplified().split(' ');
    for (const QString& word : words) {
        const QRegularExpressionMatch match = form.match(word);
        if (!match.hasMatch()) {
            return false;
        }
        steps.append({match.captured(1), match.captured(2).toInt()});
    }
    return true;
}

/// How many windows are in front of the widget's window.
int Depth(const QWidget* widget)
{
    const QWidget* window = widget->window();
    if (window == QApplication::activePopupWidget()) {
        return 0;
    }
    return window == QApplication::activeModalWidget() ? 1 : 2;
}

auto ReadingPlace(const QWidget* widget)
{
    const QPoint centre = widget->mapTo(widget->window(), widget->rect().center());
    return std::make_tuple(!widget->isVisible(), Depth(widget), centre.y(), centre.x());
}

/// Every widget of every window, each after its parent.
QList<QWidget*> AllWidgets()
{
    QList<QWidget*> widgets;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        widgets.append(window);
        const auto children = window->findChildren<QWidget*>();
        for (QWidget* child : children) {
            if (child->window() == window) {
                widgets.append(child);
            }
        }
    }
    return widgets;
}

/// The widgets below `parent`, or all widgets, with this name or class, in reading order.
QList<QWidget*> Matching(const QString& name, const QWidget* parent)
{
    QList<QWidget*> matches;
    const QList<QWidget*> widgets = AllWidgets();
    for (QWidget* widget : widgets) {
        const bool isBelow =
            parent == nullptr || (widget != parent && parent->isAncestorOf(widget));
        if (isBelow && (name.isEmpty() || widget->objectName() == name ||
                        widget->inherits(name.toLatin1().constData()))) {
            matches.append(widget);
        }
    }
    std::stable_sort(matches.begin(), matches.end(), [](const QWidget* left, const QWidget* right) {
        return ReadingPlace(left) < ReadingPlace(right);
    });
    return matches;
}

} // namespace

QWidget* WidgetFinder::Find(const QString& selector, QString* error)
{
    if (selector.trimmed().isEmpty()) {
        *error = "no widget named";
        return nullptr;
    }
    const QList<QWidget*> matches = FindAll(selector, error);
    if (matches.isEmpty()) {
        if (error->isEmpty()) {
            *error = QString("no widget \"%1\"").arg(selector);
        }
        return nullptr;
    }
    QList<Step> steps;
    ReadSteps(selector, steps);
    const int index = steps.last().index;
    if (index >= matches.size()) {
        *error = QString("no widget \"%1\": there are %2").arg(selector).arg(matches.size());
        return nullptr;
    }
    return matches[index];
}

QList<QWidget*> WidgetFinder::FindAll(const QString& selector, QString* error)
{
    if (selector.trimmed().isEmpty()) {
        return Matching({}, nullptr);
    }
    QList<Step> steps;
    if (!ReadSteps(selector, steps)) {
        *error = QString("\"%1\" is no selector").arg(selector);
        return {};
    }
    QList<QWidget*> matches = Matching(steps.first().name, nullptr);
    for (int i = 1; i < steps.size(); ++i) {
        const Step& outer = steps[i - 1];
        if (outer.index >= matches.size()) {
            *error = QString("no widget \"%1\": there are %2 of \"%3\"")
                         .arg(selector)
                         .arg(matches.size())
                         .arg(outer.name);
            return {};
        }
        matches = Matching(steps[i].name, matches[outer.index]);
    }
    return matches;
}
