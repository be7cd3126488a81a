#include "pages/ProductionTester.h"

#include "instruments/ReceiveView.h"
#include "instruments/Rows.h"
#include "instruments/Uart.h"
#include "texts/MoskTranslator.h"

#include <QFile>
#include <QGridLayout>
#include <QPushButton>
#include <QSerialPort>
#include <QStyle>
#include <QTabBar>
#include <QTabWidget>
#include <QTimer>

ToolProductionTest::ToolProductionTest(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(40, 20, 40, 20);
    layout->setSpacing(20);

    m_summaryButton = AddButton(layout, 0, {"Label_1000597", Name("btnSummary")});
    m_detailButton = AddButton(layout, 1, {"Label_1000598", Name("btnDetail")});
    auto* gap = new QWidget(this);
    gap->setFixedSize(100, 20);
    layout->addWidget(gap, 2, 0);
    m_resetButton = AddButton(layout, 3, {"Label_1000599", Name("btnReset")});

    m_views = new QTabWidget(this);
    m_views->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_views->tabBar()->hide();
    m_views->setStyleSheet("QTabWidget::pane{border:none;}");
    layout->addWidget(m_views, 0, 1, 5, 1);
    m_summary = AddView("tab0");
    m_detail = AddView("tab1");

    connect(m_summaryButton, &QPushButton::clicked, this, &ToolProductionTest::OnBtnSummaryClicked);
    connect(m_detailButton, &QPushButton::clicked, this, &ToolProductionTest::OnBtnDetailClicked);
    connect(m_resetButton, &QPushButton::clicked, this, &ToolProductionTest::OnBtnResetClicked);

    OnBtnSummaryClicked();

    m_timer = new QTimer(this);
    connect(m_timer, &QTimer::timeout, this, &ToolProductionTest::OnTimer);
    m_timer->start(100);
}

ToolProductionTest::~ToolProductionTest()
{
    CloseComPort();
}

QPushButton* ToolProductionTest::AddButton(QGridLayout* layout, int row, const Button& content)
{
    QPushButton* button = NewButton(content, {100, 50}, this);
    // The style sheet highlights a button whose "status" is "on".
    button->setProperty("status", "off");
    layout->addWidget(button, row, 0);
    return button;
}

ReceiveView* ToolProductionTest::AddView(const QString& title)
{
    auto* view = new ReceiveView(this);
    view->setReadOnly(true);
    m_views->addTab(view, title);
    return view;
}

void ToolProductionTest::ProcessData(const QByteArray& chunk)
{
    const QVector<LogPiece> pieces = m_log.Take(chunk);
    for (const LogPiece& piece : pieces) {
        m_detail->AddText(piece.echo);
        Post(piece.result);
    }
}

void ToolProductionTest::ParseLine(const QString& line)
{
    Post(m_log.Judge(line));
}

void ToolProductionTest::ProcessFile()
{
    QFile file("./a40ilog.txt");
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    for (QByteArray chunk = file.read(128); !chunk.isEmpty(); chunk = file.read(128)) {
        ProcessData(chunk);
    }
}

void ToolProductionTest::Post(const std::optional<LogResult>& result)
{
    if (result) {
        AddTestResult(MoskTranslator::Translate(result->textKey), result->ok);
    }
}

void ToolProductionTest::AddTestResult(const QString& text, bool ok)
{
    const QString line = QString("******** %1").arg(text);
    ShowResult(m_summary, line, ok);
    ShowResult(m_detail, line, ok);
}

void ToolProductionTest::OnSerialportRead()
{
    ProcessData(ReadUart(m_port));
}

// Connected to nothing: the page never writes to the port.
void ToolProductionTest::OnSerialportWritten(qint64 /*count*/) {}

void ToolProductionTest::OnTimer()
{
    m_timer->stop();
    OpenComPort();
}

void ToolProductionTest::OnBtnSummaryClicked()
{
    ShowView(0, m_summaryButton, m_detailButton);
}

void ToolProductionTest::OnBtnDetailClicked()
{
    ShowView(1, m_detailButton, m_summaryButton);
}

void ToolProductionTest::OnBtnResetClicked()
{
    m_log.Reset();
    m_summary->Clear();
    m_detail->Clear();
    CloseComPort();
    OpenComPort();
}

/// Shows a view and highlights its button.
void ToolProductionTest::ShowView(int index, QPushButton* chosen, QPushButton* other)
{
    chosen->setProperty("status", "on");
    other->setProperty("status", "off");
    m_summaryButton->style()->polish(m_summaryButton);
    m_detailButton->style()->polish(m_detailButton);
    m_views->setCurrentIndex(index);
}

void ToolProductionTest::OpenComPort()
{
    if (m_port != nullptr) {
        return;
    }
    m_port = new QSerialPort(this);
    const QString device = tr("/dev/ttyS2");
    const QString result = QString("%1 [%2]");
    if (OpenUart(m_port, device)) {
        connect(m_port, &QSerialPort::readyRead, this, &ToolProductionTest::OnSerialportRead);
        AddTestResult(result.arg(MoskTranslator::Translate("Label_1000501")).arg(device), true);
    } else {
        AddTestResult(result.arg(MoskTranslator::Translate("Label_1000500")).arg(device), false);
        delete m_port;
        m_port = nullptr;
    }
}

void ToolProductionTest::CloseComPort()
{
    CloseUart(m_port);
}

void ToolProductionTest::ShowResult(ReceiveView* view, const QString& text, bool ok)
{
    view->AddLine(text, ok ? QColor(12, 202, 66) : QColor(255, 0, 0));
}
