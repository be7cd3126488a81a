#include "instruments/MessageBoxes.h"

#include "texts/MoskTranslator.h"

#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSizePolicy>

namespace
{

const char* const boxStyle = "QMessageBox{background-color:rgb(195, 195, 195);} "
                             "QLabel{min-width:300 px;min-height:100px; font-size: 24px;} "
                             "QPushButton{ width:100px; font-size: 24px; }";

/// Makes the box wide enough for its text. The style's "min-width: 300 px" makes the box believe
/// that 300 pixels are enough for any text, and it cuts a longer one. So an empty row as wide as
/// the text stands below the others. A text of more than 480 pixels is broken into lines by the
/// box.
void MakeRoomForText(QMessageBox& box)
{
    auto* text = box.findChild<QLabel*>("qt_msgbox_label");
    auto* layout = qobject_cast<QGridLayout*>(box.layout());
    if (text == nullptr || layout == nullptr) {
        return;
    }
    int row = 0;
    int column = 0;
    int rowSpan = 0;
    int columnSpan = 0;
    layout->getItemPosition(layout->indexOf(text), &row, &column, &rowSpan, &columnSpan);
    text->ensurePolished();
    const int width = qMin(text->sizeHint().width(), 480);
    layout->addItem(new QSpacerItem(width, 0), layout->rowCount(), column, 1, columnSpan);
}

/// Runs a modal box in the program's style and returns the button pressed. `buttons` holds each
/// button with the language key of its label.
int RunBox(QWidget* parent, const QString& text,
           std::initializer_list<std::pair<QMessageBox::StandardButton, const char*>> buttons)
{
    QMessageBox box(parent);
    box.setText(text);
    for (const auto& [button, key] : buttons) {
        box.addButton(button)->setText(MoskTranslator::Translate(key));
    }
    box.setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    box.setStyleSheet(boxStyle);
    MakeRoomForText(box);
    return box.exec();
}

} // namespace

bool AskOperator(QWidget* parent, const QString& question)
{
    return RunBox(parent, question,
                  {{QMessageBox::Yes, "Label_1010003"}, {QMessageBox::No, "Label_1010004"}}) ==
           QMessageBox::Yes;
}

void TellOperator(QWidget* parent, const QString& text)
{
    RunBox(parent, text, {{QMessageBox::Ok, "Label_1010003"}});
}
