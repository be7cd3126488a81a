#include "simulated-board/operator/WidgetReader.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPainter>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QScreen>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QTextEdit>
#include <QWindow>

namespace
{

/// Calls `read` with the widget as a `Type`, if it is one.
template <typename Type, typename Read>
bool ReadAs(const QWidget* widget, QString& text, Read read)
{
    const auto* typed = qobject_cast<const Type*>(widget);
    if (typed != nullptr) {
        text = read(*typed);
    }
    return typed != nullptr;
}

QWidget* WidgetOf(const QWindow* window)
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        if (widget->windowHandle() == window) {
            return widget;
        }
    }
    return nullptr;
}

} // namespace

QString WidgetReader::Text(const QWidget* widget)
{
    QString text;
    ReadAs<QLabel>(widget, text, [](const QLabel& label) { return label.text(); }) ||
        ReadAs<QLineEdit>(widget, text, [](const QLineEdit& line) { return line.text(); }) ||
        ReadAs<QComboBox>(widget, text, [](const QComboBox& box) { return box.currentText(); }) ||
        ReadAs<QTextEdit>(widget, text, [](const QTextEdit& view) { return view.toPlainText(); }) ||
        ReadAs<QPlainTextEdit>(widget, text,
                               [](const QPlainTextEdit& view) { return view.toPlainText(); }) ||
        ReadAs<QAbstractButton>(widget, text,
                                [](const QAbstractButton& button) { return button.text(); }) ||
        ReadAs<QMessageBox>(widget, text, [](const QMessageBox& box) { return box.text(); }) ||
        ReadAs<QTabWidget>(
            widget, text,
            [](const QTabWidget& tabs) { return tabs.tabText(tabs.currentIndex()); }) ||
        ReadAs<QTabBar>(widget, text,
                        [](const QTabBar& bar) { return bar.tabText(bar.currentIndex()); }) ||
        ReadAs<QGroupBox>(widget, text, [](const QGroupBox& box) { return box.title(); }) ||
        ReadAs<QAbstractSpinBox>(widget, text,
                                 [](const QAbstractSpinBox& box) { return box.text(); }) ||
        ReadAs<QProgressBar>(widget, text, [](const QProgressBar& bar) { return bar.text(); }) ||
        ReadAs<QTableView>(widget, text,
                           [](const QTableView& table) {
                               QStringList lines;
                               const QJsonArray rows = Cells(&table).toArray();
                               for (const QJsonValue& row : rows) {
                                   lines.append(row.toVariant().toStringList().join('\t'));
                               }
                               return lines.join('\n');
                           }) ||
        ReadAs<QWidget>(widget, text, [](const QWidget& other) { return other.windowTitle(); });
    return text;
}

QJsonValue WidgetReader::Property(const QWidget* widget, const QString& name)
{
    const QVariant value = widget->property(name.toLatin1().constData());
    if (!value.isValid()) {
        return QJsonValue::Undefined;
    }
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::QSize:
        return QJsonArray{value.toSize().width(), value.toSize().height()};
    case QMetaType::QPoint:
        return QJsonArray{value.toPoint().x(), value.toPoint().y()};
    case QMetaType::QRect: {
        const QRect rect = value.toRect();
        return QJsonArray{rect.x(), rect.y(), rect.width(), rect.height()};
    }
    default:
        return QJsonValue::fromVariant(value);
    }
}

QJsonArray WidgetReader::Items(const QWidget* widget)
{
    QStringList items;
    const auto addAll = [&items](int count, auto textOf) {
        for (int i = 0; i < count; ++i) {
            items.append(textOf(i));
        }
    };
    if (const auto* box = qobject_cast<const QComboBox*>(widget)) {
        addAll(box->count(), [box](int i) { return box->itemText(i); });
    } else if (const auto* tabs = qobject_cast<const QTabWidget*>(widget)) {
        addAll(tabs->count(), [tabs](int i) { return tabs->tabText(i); });
    } else if (const auto* bar = qobject_cast<const QTabBar*>(widget)) {
        addAll(bar->count(), [bar](int i) { return bar->tabText(i); });
    } else if (const auto* view = qobject_cast<const QAbstractItemView*>(widget)) {
        if (const QAbstractItemModel* model = view->model()) {
            addAll(model->rowCount(),
                   [model](int i) { return model->index(i, 0).data().toString(); });
        }
    }
    return QJsonArray::fromStringList(items);
}

QJsonValue WidgetReader::Cells(const QWidget* widget)
{
    const auto* table = qobject_cast<const QTableView*>(widget);
    if (table == nullptr) {
        return QJsonValue::Undefined;
    }
    QJsonArray rows;
    const QAbstractItemModel* model = table->model();
    for (int row = 0; model != nullptr && row < model->rowCount(); ++row) {
        QJsonArray cells;
        for (int column = 0; column < model->columnCount(); ++column) {
            cells.append(model->index(row, column).data().toString());
        }
        rows.append(cells);
    }
    return rows;
}

QJsonObject WidgetReader::Describe(const QWidget* widget)
{
    const QPoint place = widget->mapTo(widget->window(), QPoint());
    return {{"class", widget->metaObject()->className()},
            {"name", widget->objectName()},
            {"x", place.x()},
            {"y", place.y()},
            {"width", widget->width()},
            {"height", widget->height()},
            {"visible", widget->isVisible()},
            {"enabled", widget->isEnabled()},
            {"text", Text(widget)}};
}

QImage WidgetReader::PaintScreen()
{
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    QImage picture(screen.size(), QImage::Format_RGB32);
    picture.fill(Qt::black);
    QPainter painter(&picture);
    // The list is in the order of creation: the main window comes first, a box after the window
    // below it.
    const QWindowList windows = QGuiApplication::topLevelWindows();
    for (const QWindow* window : windows) {
        QWidget* widget = WidgetOf(window);
        if (widget != nullptr && widget->isVisible()) {
            painter.drawPixmap(widget->geometry().topLeft() - screen.topLeft(), widget->grab());
        }
    }
    return picture;
}
