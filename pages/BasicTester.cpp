#include "pages/BasicTester.h"

#include "instruments/Ping.h"
#include "instruments/ResultField.h"
#include "instruments/Rows.h"
#include "instruments/Shell.h"
#include "pages/TouchTester.h"
#include "protocols/BoardTexts.h"
#include "protocols/ControllerMessages.h"
#include "texts/MoskTranslator.h"

#include <QComboBox>
#include <QDateTime>
#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QGridLayout>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

namespace
{

/// Counts the SCSI devices that the kernel lists; 0 when the USB storage driver is not loaded.
int CountUsbSticks()
{
    if (!QFileInfo("/proc/scsi/usb-storage").isDir()) {
        return 0;
    }
    const auto count = ReadShell("cat /proc/scsi/scsi | grep \"Vendor\" | wc -l", 28);
    return count ? CountOf(*count) : 0;
}

/// Counts the SD cards among the MMC devices mmcblk0 to mmcblk9.
int CountSdCards()
{
    int count = 0;
    for (int i = 0; i <= 9; ++i) {
        char path[16];
        std::snprintf(path, sizeof path, "/dev/mmcblk%d", i);
        if (FILE* device = std::fopen(path, "r")) {
            std::fclose(device);
            ++count;
        }
    }
    return SdCardsAmong(count);
}

/// Sends a message to the companion controller. The speed of the port is the one that the system
/// has set. False when the port cannot be opened. Never waits for the controller.
bool SendToController(const QByteArray& message)
{
    const char* const device = "/dev/ttyS5";
    const int port = open(device, O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (port < 0) {
        qWarning("Cannot open %s: %s", device, std::strerror(errno));
        return false;
    }
    if (write(port, message.constData(), message.size()) != message.size()) {
        qWarning("Cannot write to %s: %s", device, std::strerror(errno));
    }
    close(port);
    return true;
}

/// Sets the system's clock to a local time.
void SetSystemClock(const QDateTime& dt)
{
    std::tm fields = {};
    fields.tm_sec = dt.time().second();
    fields.tm_min = dt.time().minute();
    fields.tm_hour = dt.time().hour();
    fields.tm_mday = dt.date().day();
    fields.tm_mon = dt.date().month() - 1;
    fields.tm_year = dt.date().year() - 1900;
    // The board has no daylight saving time.
    fields.tm_isdst = 0;
    timeval now = {};
    now.tv_sec = std::mktime(&fields);
    if (settimeofday(&now, nullptr) != 0) {
        qWarning("Cannot set the system clock: %s", std::strerror(errno));
    }
}

QString CountText(int count, const QString& whatKey)
{
    return QString("%1 %2 %3")
        .arg(MoskTranslator::Translate("Label_1000018"))
        .arg(count)
        .arg(MoskTranslator::Translate(whatKey));
}

} // namespace

BasicTester::BasicTester(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(30, 20, 30, 20);
    layout->setSpacing(16);

    const QString resultText = MoskTranslator::Translate("Label_1000002");
    m_usb = new QLineEdit(resultText, this);
    m_sdCard = new QLineEdit(resultText, this);
    m_rotation = new QComboBox(this);
    m_rotation->addItems({"Rotation 0", "Rotation 1", "Rotation 2", "Rotation 3"});
    m_buzzer = new QLineEdit(resultText, this);
    auto* touch = new QLineEdit(MoskTranslator::Translate("Label_1000009"), this);
    m_ethernet = new QLineEdit("192.168.10.1", this);
    m_ethernet->setInputMethodHints(Qt::ImhPreferNumbers);
    m_clockRead = new QLineEdit(resultText, this);
    m_clockSet = new QLineEdit("2022-01-01 00:00:00", this);
    m_clockSet->setInputMethodHints(Qt::ImhPreferNumbers);
    m_mobile = new QLineEdit(publicPingTarget, this);

    const char* const detection = "Label_1000003";
    const struct {
        Row row;
        void (BasicTester::*onClicked)(bool);
    } rows[] = {
        {{"Label_1000001", m_usb, {detection, Name("btnUsbTest")}},
         &BasicTester::OnBtnUSBTestClicked},
        {{"Label_1000004", m_sdCard, {detection, Name("btnSdCardTest")}},
         &BasicTester::OnBtnSDCardTestClicked},
        {{"Label_1000005", m_rotation, {"Label_1000006", Name("btnTouchCalc")}},
         &BasicTester::OnBtnTouchCalcClicked},
        {{"Label_1000007", m_buzzer, {detection, Name("btnBeepTest")}},
         &BasicTester::OnBtnBeepTestClicked},
        {{"Label_1000008", touch, {detection, Name("btnTouchTest")}},
         &BasicTester::OnBtnTouchTestClicked},
        // The name dates from an eMMC row. It is kept, because the button is found by it from
        // outside.
        {{"Label_1000012", m_ethernet, {detection, Name("btnEmmcTest")}},
         &BasicTester::OnBtnNetTestClicked},
        // The "r" and "w" in these two names stand for reading and writing the real-time clock
        // (RTC).
        {{"Label_1000021", m_clockRead, {"Label_1000023", Name("btnrRTCTest")}},
         &BasicTester::OnBtnGetRTCTestClicked},
        {{"Label_1000022", m_clockSet, {"Label_1000024", Name("btnwRTCTest")}},
         &BasicTester::OnBtnSetRTCTestClicked},
        {{"Label_1000025", m_mobile, {detection, Name("btn4gTest")}},
         &BasicTester::OnBtn4gTestClicked},
    };
    int count = 0;
    for (const auto& each : rows) {
        QPushButton* button = AddRow(layout, count++, {100, 30}, each.row);
        connect(button, &QPushButton::clicked, this, each.onClicked);
    }
    AddFiller(layout, count);

    // Calibration ends with a restart of the board, so this page does not offer it.
    auto* calibrate = findChild<QPushButton*>("btnTouchCalc");
    calibrate->setText(MoskTranslator::Translate("Label_1000006"));
    calibrate->setEnabled(false);
    m_rotation->setEnabled(false);
    InitCurrentRotate();
}

void BasicTester::InitCurrentRotate()
{
    QFile calibration("/var/setting/system/pointercal");
    const bool opened = calibration.open(QIODevice::ReadOnly);
    m_rotation->setCurrentIndex(opened ? RotationOf(calibration.readLine()) : 0);
}

void BasicTester::SetTimeTyUart(const QDateTime& dt)
{
    if (dt.isValid() && SendToController(TimeMessage(dt))) {
        SetSystemClock(dt);
    }
}

void BasicTester::OnBtnUSBTestClicked(bool /*checked*/)
{
    ShowDetecting(m_usb);
    m_usb->setText(CountText(CountUsbSticks(), "Label_1000019"));
}

void BasicTester::OnBtnSDCardTestClicked(bool /*checked*/)
{
    ShowDetecting(m_sdCard);
    m_sdCard->setText(CountText(CountSdCards(), "Label_1000020"));
}

void BasicTester::OnBtnTouchCalcClicked(bool /*checked*/)
{
    RunShell(QString("ts_calibrate -r %1").arg(m_rotation->currentIndex()).toLocal8Bit());
    RunShell("reboot");
    window()->update();
}

void BasicTester::OnBtnBeepTestClicked(bool /*checked*/)
{
    const bool on = m_beep == 0;
    if (!SendToController(BuzzerMessage(on))) {
        ShowVerdict(m_buzzer, MoskTranslator::Translate("Label_1010002"), false);
        return;
    }
    m_beep = on ? 1000 : 0;
    ShowVerdict(m_buzzer, MoskTranslator::Translate(on ? "Label_1000016" : "Label_1000017"), true);
}

void BasicTester::OnBtnTouchTestClicked(bool /*checked*/)
{
    ToolTouchTest test(nullptr);
    test.setWindowModality(Qt::ApplicationModal);
    test.show();
    test.exec();
}

// Connected to nothing: the page has no row for the eMMC or the memory (DDR).
void BasicTester::OnBtnEmmcTestClicked(bool /*checked*/) {}

void BasicTester::OnBtnDdrTestClicked(bool /*checked*/) {}

void BasicTester::OnBtnNetTestClicked(bool /*checked*/)
{
    const QString target = m_ethernet->text();
    if (target.count('.') != 3) {
        return;
    }
    PaintPage();
    Ping(m_ethernet, QString("ping -I eth0 %1 -w 2 -c 2").arg(target));
}

void BasicTester::OnBtnGetRTCTestClicked(bool /*checked*/)
{
    m_clockRead->setText(MoskTranslator::Translate("Label_1000013"));
    const auto time = ReadShell("date \"+%Y-%m-%d %H:%M:%S\"", 30);
    if (!time) {
        return;
    }
    ShowVerdict(m_clockRead, QString::fromLatin1(time->constData()), true);
    PaintPage();
}

void BasicTester::OnBtnSetRTCTestClicked(bool /*checked*/)
{
    SetTimeTyUart(QDateTime::fromString(m_clockSet->text(), "yyyy-MM-dd hh:mm:ss"));
}

void BasicTester::OnBtn4gTestClicked(bool /*checked*/)
{
    static bool s_setMode = false;
    if (!s_setMode) {
        // Makes the modem bring up its data connection as the network device usb0. Whether it was
        // there shows in the ping.
        RunShell("echo -e \"AT+QNETDEVCTL=3,1,1\r\n\"  > /dev/ttyUSB1");
        s_setMode = true;
    }
    Ping(m_mobile, QString("ping -I usb0 %1 -w 2 -c 2").arg(m_mobile->text()));
}

/// Pings and shows the verdict in `line`, where it replaces the typed target.
void BasicTester::Ping(QLineEdit* line, const QString& command)
{
    // Never deleted: a ping that still runs would be killed and waited for. One that a driver under
    // test holds in the kernel cannot be killed, and would stop the page for another 30 s. Each
    // check leaves 10 kB, and four descriptors as long as its ping runs.
    auto* process = new QProcess;
    const QByteArray output = RunPing(process, command);
    const bool answered = PingAnswered(QString::fromLatin1(output.constData()));
    ShowVerdict(line, MoskTranslator::Translate(answered ? "Label_1000014" : "Label_1000015"),
                answered);
    PaintPage();
}
