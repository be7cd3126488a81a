#pragma once

#include "protocols/FlashingLogParser.h"

#include <QWidget>

class QGridLayout;
class QPushButton;
class QSerialPort;
class QTabWidget;
class QTimer;
class ReceiveView;
struct Button;

/// Listens to the log of a board that is being flashed. It shows the log as it comes, and a green
/// or red line for each milestone.
class ToolProductionTest : public QWidget
{
    Q_OBJECT

public:
    explicit ToolProductionTest(QWidget* parent);
    ~ToolProductionTest() override;

    /// Takes a chunk of the log as it was received. A line may be spread over several chunks.
    void ProcessData(const QByteArray& chunk);

    /// Shows the result of a complete line, if the line holds a marker.
    void ParseLine(const QString& line);

    /// Replays a captured log, "./a40ilog.txt", as if it were received. The page itself never does
    /// this.
    void ProcessFile();

    /// Adds "******** " and the text to both views, green when `ok`, else red.
    void AddTestResult(const QString& text, bool ok);

private slots:
    void OnSerialportRead();
    void OnSerialportWritten(qint64 count);
    void OnTimer();
    void OnBtnSummaryClicked();
    void OnBtnDetailClicked();
    void OnBtnResetClicked();

private:
    QPushButton* AddButton(QGridLayout* layout, int row, const Button& content);
    ReceiveView* AddView(const QString& title);
    void ShowView(int index, QPushButton* chosen, QPushButton* other);
    void OpenComPort();
    void CloseComPort();
    void Post(const std::optional<LogResult>& result);
    void ShowResult(ReceiveView* view, const QString& text, bool ok);

    QTimer* m_timer = nullptr;
    QPushButton* m_summaryButton = nullptr;
    QPushButton* m_detailButton = nullptr;
    QPushButton* m_resetButton = nullptr;
    QTabWidget* m_views = nullptr;
    ReceiveView* m_summary = nullptr;
    ReceiveView* m_detail = nullptr;
    QSerialPort* m_port = nullptr; ///< null while closed
    FlashingLogParser m_log;
};
