#include "pages/VncTester.h"

#include "instruments/MessageBoxes.h"
#include "instruments/Rows.h"
#include "instruments/ServiceFile.h"
#include "instruments/Shell.h"
#include "instruments/Title.h"
#include "protocols/IniFile.h"
#include "texts/MoskTranslator.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <limits>

namespace
{

const char* const vncServerPath = "/etc/vnclinuxfb.conf";
const char* const frpClientPath = "/etc/frpc.ini";
const IniKey enable = {"General", "enable"};
const IniKey security = {"General", "security"};
const IniKey password = {"General", "password"};
const IniKey serverAddress = {"common", "server_addr"};
const IniKey serverPort = {"common", "server_port"};
const IniKey remotePort = {"vnc", "remote_port"};

const QSize titleSize(180, 30);

/// Takes port numbers. QIntValidator alone takes larger numbers of as many digits, and signs,
/// separators and other digits of the operator's language.
///
/// Leading zeros are taken: 7000 becomes 8000 by way of 000.
class PortValidator : public QIntValidator
{
public:
    explicit PortValidator(QObject* parent) : QIntValidator(0, 65535, parent) {}

    State validate(QString& text, int& position) const override
    {
        const bool isPort = text.size() <= 5 && text.toInt() <= top() &&
                            std::all_of(text.cbegin(), text.cend(), [](QChar character) {
                                return character >= '0' && character <= '9';
                            });
        return isPort ? QIntValidator::validate(text, position) : Invalid;
    }
};

} // namespace

ToolVncTest::ToolVncTest(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(40, 20, 40, 20);
    layout->setSpacing(20);

    m_enable = AddBox(layout, 0, "Label_1010007");
    auto* besideEnable = new QWidget(this);
    besideEnable->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    layout->addWidget(besideEnable, 0, 1, 1, 2);

    m_serverAddress = AddField(layout, 1, "Label_1001000");
    m_serverPort = AddField(layout, 2, "Label_1001001");
    m_remotePort = AddField(layout, 3, "Label_1001002");
    for (QLineEdit* port : {m_serverPort, m_remotePort}) {
        port->setValidator(new PortValidator(port));
        // The file may hold something else, and the field shows it. An edit that does not make a
        // port of it clears the field.
        connect(port, &QLineEdit::textEdited, port, [port](const QString& text) {
            if (!text.isEmpty() && !port->hasAcceptableInput()) {
                port->clear();
            }
        });
    }
    m_security = AddBox(layout, 4, "Label_1001004");
    m_password = AddField(layout, 5, "Label_1001003");
    for (QLineEdit* field : {m_serverAddress, m_serverPort, m_remotePort}) {
        field->setInputMethodHints(Qt::ImhPreferNumbers);
    }

    QPushButton* set = NewButton({"Label_1010005"}, {100, 30}, this);
    layout->addWidget(set, 6, 0);
    AddFiller(layout, 7);

    connect(set, &QPushButton::clicked, this, &ToolVncTest::OnBtnSetClicked);

    LoadConfig();
}

QCheckBox* ToolVncTest::AddBox(QGridLayout* layout, int row, const char* textKey)
{
    auto* box = new QCheckBox(MoskTranslator::Translate(textKey), this);
    box->setFixedSize(titleSize);
    NarrowText(box);
    layout->addWidget(box, row, 0);
    return box;
}

QLineEdit* ToolVncTest::AddField(QGridLayout* layout, int row, const char* titleKey)
{
    auto* field = new QLineEdit(this);
    field->setFixedSize(240, 30);
    // Set writes what the field holds. The default limit would cut off a long value of the file.
    field->setMaxLength(std::numeric_limits<int>::max());
    AddWideRow(layout, row, titleSize, {titleKey, field});
    return field;
}

void ToolVncTest::LoadConfig()
{
    const QByteArray server = ReadServiceFile(vncServerPath);
    m_enable->setChecked(IniValue(server, enable).toInt() == 1);
    m_security->setChecked(IniValue(server, security).toInt() > 1);
    m_password->setText(IniValue(server, password));

    const QByteArray client = ReadServiceFile(frpClientPath);
    m_serverAddress->setText(IniValue(client, serverAddress));
    m_serverPort->setText(IniValue(client, serverPort));
    m_remotePort->setText(IniValue(client, remotePort));
}

void ToolVncTest::OnBtnSetClicked()
{
    EditServiceFile(vncServerPath, [this](QByteArray content) {
        content = IniWithValue(content, enable, m_enable->isChecked() ? "1" : "0");
        content = IniWithValue(content, security, m_security->isChecked() ? "2" : "1");
        return IniWithValue(content, password, m_password->text());
    });
    EditServiceFile(frpClientPath, [this](QByteArray content) {
        content = IniWithValue(content, serverAddress, m_serverAddress->text());
        content = IniWithValue(content, serverPort, m_serverPort->text());
        return IniWithValue(content, remotePort, m_remotePort->text());
    });
    RunShell("sync");
    // Shown even when a file could not be written.
    TellOperator(nullptr, MoskTranslator::Translate("Label_1010006"));
}
