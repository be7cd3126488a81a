#include "pages/SerialPortTester.h"

#include "instruments/ReceiveView.h"
#include "instruments/Rows.h"
#include "instruments/Uart.h"
#include "texts/MoskTranslator.h"

#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSerialPort>
#include <QTextCodec>
#include <QVBoxLayout>

#include <limits>

namespace
{

std::unique_ptr<QTextDecoder> NewDecoder()
{
    return std::make_unique<QTextDecoder>(QTextCodec::codecForName("UTF-8"));
}

} // namespace

SerialPortTester::SerialPortTester(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(40, 20, 40, 20);
    layout->setSpacing(20);

    m_chooser = new QComboBox(this);
    for (int i = 0; i <= 9; ++i) {
        m_chooser->addItem(QString("COM%1").arg(i));
    }
    m_chooser->setCurrentIndex(2);
    m_openClose =
        AddRow(layout, {"Label_1000300", m_chooser, {"Label_1000301", Name("btnOpenCom")}});

    m_sendText = new QLineEdit(tr("Hello MOSK!"), this);
    // Pasted text is sent whole. The default limit would silently cut it off.
    m_sendText->setMaxLength(std::numeric_limits<int>::max());
    QPushButton* send =
        AddRow(layout, {"Label_1000302", m_sendText, {"Label_1000303", Name("btnSendCom")}});

    m_received = new ReceiveView(this);
    AddRow(layout, {"Label_1000304", m_received});

    connect(m_openClose, &QPushButton::clicked, this, &SerialPortTester::OnOpenCloseComPort);
    connect(send, &QPushButton::clicked, this, &SerialPortTester::OnBtnSendClicked);
}

SerialPortTester::~SerialPortTester()
{
    CloseUart(m_port);
}

void SerialPortTester::OnOpenCloseComPort(bool /*checked*/)
{
    if (m_port != nullptr) {
        CloseUart(m_port);
        m_openClose->setText(MoskTranslator::Translate("Label_1000301"));
    } else {
        Open();
    }
}

void SerialPortTester::OnBtnSendClicked(bool /*checked*/)
{
    if (m_port == nullptr || !m_port->isOpen()) {
        return;
    }
    // Sent as a C string: a NUL in the text ends it.
    m_port->write(m_sendText->text().toUtf8().constData());
    m_port->write("\n");
}

void SerialPortTester::OnSerialportRead()
{
    const QByteArray received = ReadUart(m_port);
    const int nul = received.indexOf('\0');
    QString text = m_decoder->toUnicode(nul < 0 ? received : received.left(nul));
    if (nul >= 0) {
        // Bytes after a NUL are not shown, so a character that the NUL cuts can never be completed.
        if (m_decoder->needsMoreData()) {
            text += QChar(QChar::ReplacementCharacter);
        }
        m_decoder = NewDecoder();
    }
    m_received->AddText(text);
}

// Connected to nothing: the page shows only what it receives.
void SerialPortTester::OnSerialportWritten(qint64 /*count*/) {}

void SerialPortTester::Open()
{
    m_port = new QSerialPort(this);
    const QString device = tr("/dev/ttyS%1").arg(m_chooser->currentIndex());
    if (!OpenUart(m_port, device)) {
        QMessageBox::information(
            this, MoskTranslator::Translate("Label_1010000"),
            tr("[%1] %2").arg(device).arg(MoskTranslator::Translate("Label_1000306")),
            QMessageBox::Ok);
        delete m_port;
        m_port = nullptr;
        return;
    }
    m_decoder = NewDecoder();
    connect(m_port, &QSerialPort::readyRead, this, &SerialPortTester::OnSerialportRead);
    m_openClose->setText(MoskTranslator::Translate("Label_1000305"));
}
