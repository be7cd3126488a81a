#pragma once

#include "texts/MoskSettings.h"
#include "texts/MoskTranslator.h"

#include <QAbstractButton>
#include <QApplication>
#include <QGridLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

/// What the tests do at a page as the operator does it.

inline QString Text(const char* key)
{
    return MoskTranslator::Translate(key);
}

/// Chooses the program's language: what is built from now on speaks it.
inline void Speak(const QString& language)
{
    MoskSettings::GetInstance()->SetValue("Language", language);
    MoskTranslator::Reload();
}

/// Presses the button of that name as a finger does.
inline void Press(QWidget* page, const QString& name)
{
    auto* button = page->findChild<QAbstractButton*>(name);
    QVERIFY2(button != nullptr, qPrintable("no button " + name));
    QTest::mouseClick(button, Qt::LeftButton);
}

/// The widget at a place of the page's grid; null where there is none of that type.
template <typename Widget>
Widget* InGrid(QWidget* page, int row, int column)
{
    auto* layout = qobject_cast<QGridLayout*>(page->layout());
    QLayoutItem* item = layout != nullptr ? layout->itemAtPosition(row, column) : nullptr;
    return item != nullptr ? qobject_cast<Widget*>(item->widget()) : nullptr;
}

/// The colour of a field's text, as the style sheet gives it.
inline QColor TextColour(const QWidget* field)
{
    return field->palette().color(QPalette::Text);
}

/// Looks at the modal box that the next event loop finds, and presses one of its buttons.
template <typename Look>
void AtTheBox(QMessageBox::StandardButton press, Look look)
{
    QTimer::singleShot(0, qApp, [press, look] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        QVERIFY(box != nullptr);
        look(*box);
        QTest::mouseClick(box->button(press), Qt::LeftButton);
    });
}
