#include "pages/VncTester.h"

#include "frame/MoskTranslator.h"
#include "instruments/MessageBoxes.h"
#include "instruments/Shell.h"
#include "instruments/Title.h"
#include "pages/IniFile.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>

namespace
{

const char* const vncServerPath = "/etc/vnclinuxfb.conf";
const char* const frpClientPath = "/etc/frpc.ini";
const QSize titleSize(180, 30);

/// A value as an integer; 0 when it is none. The way over the text keeps a number beyond all
/// integers from being cut down to one.
int Number(const QSettings& settings, const QString& key)
{
    return settings.value(key).toString().toInt();
}

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
    m_serverPort->setValidator(new QIntValidator(0, 65535, m_serverPort));
    m_remotePort = AddField(layout, 3, "Label_1001002");
    m_remotePort->setValidator(new QIntValidator(0, 65535, m_remotePort));
    m_security = AddBox(layout, 4, "Label_1001004");
    m_password = AddField(layout, 5, "Label_1001003");

    auto* set = new QPushButton(MoskTranslator::Translate("Label_1010005"), this);
    set->setFixedSize(100, 30);
    layout->addWidget(set, 6, 0);

    auto* filler = new QWidget(this);
    filler->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    layout->addWidget(filler, 7, 0, 1, 3);

    connect(set, &QPushButton::clicked, this, &ToolVncTest::OnBtnSetClicked);

    LoadConfig();
}

QCheckBox* ToolVncTest::AddBox(QGridLayout* layout, int row, const QString& textKey)
{
    auto* box = new QCheckBox(MoskTranslator::Translate(textKey), this);
    box->setFixedSize(titleSize);
    NarrowText(box);
    layout->addWidget(box, row, 0);
    return box;
}

QLineEdit* ToolVncTest::AddField(QGridLayout* layout, int row, const QString& titleKey)
{
    layout->addWidget(NewTitle(titleKey, titleSize, this), row, 0);

    auto* field = new QLineEdit(this);
    field->setFixedSize(240, 30);
    layout->addWidget(field, row, 1);
    return field;
}

void ToolVncTest::LoadConfig()
{
    m_enable->setChecked(false);
    m_security->setChecked(false);
    m_password->clear();
    // Not a mere exists(): reading a pipe in the file's place would never end.
    if (QFileInfo(vncServerPath).isFile()) {
        const QSettings server(vncServerPath, QSettings::IniFormat);
        m_enable->setChecked(Number(server, "enable") == 1);
        m_security->setChecked(Number(server, "security") > 1);
        m_password->setText(server.value("password").toString());
    }
    if (QFileInfo(frpClientPath).isFile()) {
        const QSettings client(frpClientPath, QSettings::IniFormat);
        m_serverAddress->setText(client.value("common/server_addr").toString());
        m_serverPort->setText(client.value("common/server_port").toString());
        m_remotePort->setText(client.value("vnc/remote_port").toString());
    }
}

void ToolVncTest::OnBtnSetClicked()
{
    WriteIniFile(vncServerPath, {{"", "enable", m_enable->isChecked() ? "1" : "0"},
                                 {"", "security", m_security->isChecked() ? "2" : "1"},
                                 {"", "password", m_password->text()}});
    WriteIniFile(frpClientPath, {{"common", "server_addr", m_serverAddress->text()},
                                 {"common", "server_port", m_serverPort->text()},
                                 {"vnc", "remote_port", m_remotePort->text()}});
    RunShell("sync");
    // Said whatever became of the files.
    TellOperator(nullptr, MoskTranslator::Translate("Label_1010006"));
}
