#include "frame/StartPage.h"

#include "frame/MoskTester.h"
#include "instruments/MessageBoxes.h"
#include "instruments/Rows.h"
#include "instruments/Shell.h"
#include "instruments/Title.h"
#include "protocols/BoardTexts.h"
#include "texts/MoskSettings.h"
#include "texts/MoskTranslator.h"

#include <QComboBox>
#include <QFile>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTextStream>

namespace
{

const char* const switchMarker = "/etc/sw2hmi";
const char* const testEndMarker = "/etc/qttestend";
const QSize titleSize(80, 30);
const QSize buttonSize(100, 40);

} // namespace

bool StartPage::s_switchHmi = false;

StartPage::StartPage(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(40, 40, 40, 40);
    layout->setSpacing(10);

    layout->addWidget(NewTitle("Label_1000210", titleSize, this), 0, 0);
    m_language = new QComboBox(this);
    m_language->setFixedSize(180, 30);
    m_language->addItem(MoskTranslator::Translate("Label_1000211"));
    m_language->addItem("English");
    const bool isEnglish = MoskSettings::GetInstance()->GetValue("Language") == "english";
    m_language->setCurrentIndex(isEnglish ? 1 : 0);
    layout->addWidget(m_language, 0, 1);

    AddWideRow(layout, 1, titleSize, {"Label_1000200", new QLabel(GetOsVersion(), this)});
    AddWideRow(layout, 2, titleSize,
               {"Label_1000201", new QLabel(MoskTranslator::Translate("Label_1000202"), this)});
    QPushButton* reboot = NewButton({"Label_1000203", Name("btnReboot")}, buttonSize, this);
    layout->addWidget(reboot, 3, 0);

    int fillerRow = 4;
    if (QFileInfo(testEndMarker).isFile()) {
        m_testEnded = true;
    } else {
        QPushButton* switchHmi =
            NewButton({"Label_1000204", Name("btnSwitchHMI")}, buttonSize, this);
        layout->addWidget(switchHmi, 3, 1);
        connect(switchHmi, &QPushButton::clicked, this, &StartPage::OnBtSwitchHMIClicked);
        QPushButton* testEnd = NewButton({"Label_1000207", Name("btnTestEnd")}, buttonSize, this);
        layout->addWidget(testEnd, 4, 0);
        connect(testEnd, &QPushButton::clicked, this, &StartPage::OnBtTestEndClicked);
        fillerRow = 5;
    }

    AddFiller(layout, fillerRow);

    connect(m_language, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &StartPage::OnLanguageChanged);
    connect(reboot, &QPushButton::clicked, this, &StartPage::OnBtRebootClicked);
}

QString StartPage::GetOsVersion()
{
    const QString builtIn = "V1.1 Build 2022-10-18";
    QFile file("/proc/version");
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return builtIn;
    }
    const QString stamp = BuildStampOf(QTextStream(&file).readLine());
    return stamp.isEmpty() ? builtIn : stamp;
}

void StartPage::OnLanguageChanged(int index)
{
    MoskSettings::GetInstance()->SetValue("Language", index == 1 ? "english" : "chinese");
    MoskTranslator::Reload();
    g_mainwnd->TranslateUI();
}

void StartPage::OnBtRebootClicked(bool /*checked*/)
{
    RunShell("sync");
    RunShell("reboot");
}

void StartPage::OnBtSwitchHMIClicked(bool /*checked*/)
{
    ConfirmOnce(s_switchHmi, "Label_1000206", "Label_1000205", switchMarker);
}

void StartPage::OnBtTestEndClicked(bool /*checked*/)
{
    ConfirmOnce(m_testEnded, "Label_1000208", "Label_1000209", testEndMarker);
}

void StartPage::ConfirmOnce(bool& confirmed, const QString& question, const QString& confirmedText,
                            const QByteArray& markerFile)
{
    if (confirmed) {
        QMessageBox::information(this, MoskTranslator::Translate("Label_1010000"),
                                 MoskTranslator::Translate(confirmedText), QMessageBox::Ok);
        return;
    }
    if (AskOperator(this, MoskTranslator::Translate(question))) {
        RunShell("touch " + markerFile);
        RunShell("sync");
        confirmed = true;
    }
}
