#include "instruments/MessageBoxes.h"

#include "frame/MoskTranslator.h"

#include <QMessageBox>
#include <QPushButton>
#include <QSizePolicy>

namespace
{

const char* const boxStyle = "QMessageBox{background-color:rgb(195, 195, 195);} "
                             "QLabel{min-width:300 px;min-height:100px; font-size: 24px;} "
                             "QPushButton{ width:100px; font-size: 24px; }";

/// Runs a modal box of the program's look; `buttons` and their label keys in the same order.
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
