#pragma once

#include <QMainWindow>

class BodyWidget;
class HeadWidget;
class QTimer;
class QVBoxLayout;

/// The main window: frameless, as large as the screen's available area, the header above the body.
class MoskTester : public QMainWindow
{
    Q_OBJECT

public:
    explicit MoskTester(QWidget* parent = nullptr);

    BodyWidget* GetBody();

    /// Shows all texts in the current language. This happens one turn of the event loop later,
    /// because it deletes the page whose slot asks for it.
    void TranslateUI();

private slots:
    void OnTimer();

private:
    QTimer* m_timer = nullptr;
    QWidget* m_central = nullptr;
    QVBoxLayout* m_layout = nullptr;
    HeadWidget* m_header = nullptr;
    BodyWidget* m_body = nullptr;
};

/// The main window; null until its constructor has finished.
extern MoskTester* g_mainwnd;
