#include "pages/CanTester.h"

#include "instruments/ReceiveView.h"
#include "instruments/Rows.h"
#include "pages/CanThread.h"
#include "protocols/CanFrame.h"
#include "texts/MoskTranslator.h"

#include <QComboBox>
#include <QDebug>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <linux/can/raw.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

/// Logs why a call on a CAN interface failed. The page goes on: a dead bus is a silent bus.
void NoteFailure(bool ok, const char* call, const char* interface)
{
    if (!ok) {
        qDebug("%s: %s: %s", interface, call, std::strerror(errno));
    }
}

} // namespace

CanTester::CanTester(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(30, 20, 30, 20);
    layout->setSpacing(20);

    m_chooser = new QComboBox(this);
    m_chooser->addItem("can0");
    m_openClose =
        // The buttons have the same names as those of the serial page.
        AddRow(layout, {"Label_1000900", m_chooser, {"Label_1000901", Name("btnOpenCom")}});

    m_sendText = new QLineEdit(tr("1122334455667788"), this);
    m_sendText->setInputMethodHints(Qt::ImhPreferNumbers);
    QPushButton* send =
        AddRow(layout, {"Label_1000902", m_sendText, {"Label_1000903", Name("btnSendCom")}});

    m_received = new ReceiveView(this);
    AddRow(layout, {"Label_1000904", m_received});

    connect(m_openClose, &QPushButton::clicked, this, &CanTester::OnOpenCloseCanPort);
    connect(send, &QPushButton::clicked, this, &CanTester::OnBtnSendClicked);
}

CanTester::~CanTester()
{
    StopCan();
}

void CanTester::StartCan(int which)
{
    if (m_socket >= 0 || m_isUsedUp) {
        return;
    }
    const char* interface = which != 0 ? "can1" : "can0";
    m_socket = socket(AF_CAN, SOCK_RAW, CAN_RAW);
    NoteFailure(m_socket >= 0, "socket", interface);
    NoteFailure(fcntl(m_socket, F_SETFL, 0) == 0, "fcntl", interface);
    NoteFailure(fcntl(m_socket, F_SETFL, O_NONBLOCK) == 0, "fcntl", interface);

    ifreq request = {};
    std::strncpy(request.ifr_name, interface, IFNAMSIZ - 1);
    // If the interface is missing, index 0 would bind to every bus.
    request.ifr_ifindex = -1;
    NoteFailure(ioctl(m_socket, SIOCGIFINDEX, &request) == 0, "ioctl", interface);

    m_address.can_family = AF_CAN;
    m_address.can_ifindex = request.ifr_ifindex;
    NoteFailure(bind(m_socket, reinterpret_cast<sockaddr*>(&m_address), sizeof m_address) == 0,
                "bind", interface);

    // A kernel without CAN gives no socket. Open can then be pressed again while a receiver runs.
    StopReceiver();
    m_receiver = new CanThread(m_socket, nullptr);
    connect(m_receiver, &CanThread::message, this, &CanTester::OnMessage);
    m_receiver->start();
}

void CanTester::StopCan()
{
    StopReceiver();
    if (m_socket >= 0) {
        ::close(m_socket);
        m_socket = -1;
        m_isUsedUp = true;
    }
}

void CanTester::StopReceiver()
{
    if (m_receiver == nullptr) {
        return;
    }
    m_receiver->stop();
    delete m_receiver;
    m_receiver = nullptr;
}

void CanTester::OnOpenCloseCanPort(bool /*checked*/)
{
    if (m_socket < 0 && !m_isUsedUp) {
        m_openClose->setText(MoskTranslator::Translate("Label_1000905"));
        StartCan(0);
    } else {
        m_openClose->setText(MoskTranslator::Translate("Label_1000901"));
        StopCan();
    }
}

void CanTester::OnBtnSendClicked(bool /*checked*/)
{
    if (m_socket < 0) {
        return;
    }
    const can_frame frame = CanFrameOf(m_sendText->text());
    const ssize_t written = write(m_socket, &frame, sizeof frame);
    NoteFailure(written >= 0, "write", qUtf8Printable(m_chooser->currentText()));
}

void CanTester::OnMessage(QString text)
{
    if (!text.isEmpty()) {
        m_received->AddText(text);
    }
}
