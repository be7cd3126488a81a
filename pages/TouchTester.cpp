#include "pages/TouchTester.h"

#include "frame/MoskTranslator.h"
#include "frame/MoskUtility.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QPushButton>

ToolTouchTest::ToolTouchTest(QWidget* parent) : QDialog(parent, Qt::FramelessWindowHint)
{
    setObjectName("toolTouchTest");
    resize(MoskUtility::GetMainWindowSize());

    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);

    const int side = 9;
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            auto* button = new QPushButton(QString::number(side * row + column + 1), this);
            button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
            layout->addWidget(button, row, column);
        }
    }

    auto* exit = qobject_cast<QPushButton*>(layout->itemAtPosition(side / 2, side / 2)->widget());
    exit->setText(MoskTranslator::Translate("Label_1000600"));
    connect(exit, &QPushButton::clicked, this, &ToolTouchTest::OnBtnClosed);
}

// A keyboard on the board must not end the test: only the finger on the centre does.
void ToolTouchTest::keyPressEvent(QKeyEvent* event)
{
    event->ignore();
}

void ToolTouchTest::OnBtnClosed(bool /*checked*/)
{
    close();
}
