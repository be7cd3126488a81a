#include "pages/VoiceTester.h"

#include "instruments/NameSelector.h"
#include "instruments/Rows.h"
#include "instruments/Shell.h"
#include "protocols/Player.h"
#include "texts/MoskTranslator.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

namespace
{

/// Set by the first play, and kept until the program ends: the program plays one sound in each run.
/// Not a member, because it must outlive the page.
bool m_isPlaying = false;

} // namespace

VoiceTester::VoiceTester(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(30, 20, 30, 20);
    layout->setSpacing(20);

    const QSize size(100, 30);
    m_files = new NameSelector(WithoutLineEnd, this);
    QPushButton* scan = AddRow(layout, 0, size, {"Label_1000800", m_files, {"Label_1000801"}});
    QPushButton* play =
        AddRow(layout, 1, size, {"Label_1000802", nullptr, {"Label_1000803", Name("btnPlay")}});
    AddFiller(layout, 2);

    m_timer = new QTimer(this);

    connect(scan, &QPushButton::clicked, this, &VoiceTester::OnBtnScanClicked);
    connect(play, &QPushButton::clicked, this, &VoiceTester::OnBtnPlayClicked);
    connect(m_timer, &QTimer::timeout, this, &VoiceTester::OnTimeout);
}

VoiceTester::~VoiceTester()
{
    RunShell("killall tinyplay");
}

void VoiceTester::OnBtnScanClicked(bool /*checked*/)
{
    m_files->clear();
    ReadLines("find", {"/mnt/", "-name", "*.wav"}, [this](const QByteArray& line) {
        m_files->addItem(QString::fromLocal8Bit(line.constData()));
    });
}

void VoiceTester::OnBtnPlayClicked(bool /*checked*/)
{
    const QString file = m_files->currentText();
    if (m_isPlaying || file.isEmpty()) {
        return;
    }
    RunShell(PlayCommand(file));
    m_isPlaying = true;
}

void VoiceTester::OnTimeout()
{
    if (m_status != nullptr) {
        m_status->setText(
            MoskTranslator::Translate(m_isRecording ? "Label_1000809" : "Label_1000811"));
    }
    m_isRecording = false;
    m_timer->stop();
}
