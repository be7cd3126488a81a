#pragma once

#include <QEvent>
#include <QObject>

class QMainWindow;
class QQuickWidget;
class QTimer;
class QWidget;

/// The on-screen keyboard, in the lower part of the main window. A window of its own would turn the
/// page black, because the board's screen has no compositor. The keyboard is loaded when a field is
/// first tapped. While it is shown, the window's content moves up until the field is visible.
class KeyboardPanel : public QObject
{
    Q_OBJECT

public:
    explicit KeyboardPanel(QMainWindow* window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void OnSettled();

private:
    void FollowFinger(const QObject* watched, QEvent::Type event);
    void FollowContent(const QObject* watched, QEvent::Type event);
    void Open();
    void Load();
    QWidget* FieldInFocus() const;
    bool IsWanted() const;
    void ShowBelow(const QWidget* field);
    void MoveContent(int distance);
    void Warn(const QString& reason);

    QMainWindow* m_window = nullptr;
    QTimer* m_settle = nullptr;
    QQuickWidget* m_keys = nullptr;
    /// How far the content has moved up, in pixels.
    int m_distance = 0;
    bool m_tried = false;
    bool m_warned = false;
    /// Whether a field was tapped since the last OnSettled() of an active window.
    bool m_tapped = false;
    bool m_fingerOnPage = false;
};
