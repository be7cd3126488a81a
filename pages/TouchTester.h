#pragma once

#include <QDialog>

/// The touch test: the whole screen full of buttons that light up red under the finger. The
/// operator judges by eye whether every place was reached; the button in the centre ends the test.
class ToolTouchTest : public QDialog
{
    Q_OBJECT

public:
    explicit ToolTouchTest(QWidget* parent);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private slots:
    void OnBtnClosed(bool checked);

private:
    void Light(const QWidget* place);

    /// Whether the last event was a finger that was lifted.
    bool m_isLifted = false;
};
