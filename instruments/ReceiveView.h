#pragma once

#include <QColor>
#include <QElapsedTimer>
#include <QTextEdit>
#include <QVector>

class QTextCursor;
class QTimer;

/// Shows what a port receives. It is made to take text at full rate for days.
///
/// Text that comes after a silence is shown at once. Text that comes quickly is gathered and shown
/// ten times a second, with one insertion and one repaint: painting, not layout, takes the time.
/// Where an update itself takes long, the pause after it is longer, but never half a second.
/// The oldest lines are dropped. The beginning of a line that does not end is dropped too, because
/// the whole line is laid out for each addition.
///
/// New text does not move the operator's cursor, selection or scroll position. A cursor at the end
/// and a view that shows its end do move along.
class ReceiveView : public QTextEdit
{
    Q_OBJECT

public:
    explicit ReceiveView(QWidget* parent);

    /// Adds text at the end, in the format of the text before it.
    void AddText(const QString& text);

    /// Adds a coloured line at the end. Text after it is black.
    void AddLine(const QString& line, const QColor& colour);

    /// Removes all text, including text that has not been shown yet.
    void Clear();

    /// Shows the gathered text now.
    void ShowGathered();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct Run {
        QString text;
        QColor colour; ///< invalid: as the text before it
    };

    void Gather(const QString& text, const QColor& colour);
    void ShowOrWait();
    void InsertGathered(QTextCursor& cursor);
    void CutLastLine(QTextCursor& cursor);
    void DropOldestLines(QTextCursor& cursor);
    bool Follows() const;

    QVector<Run> m_gathered;
    int m_gatheredSize = 0;
    bool m_endsInReturn = false;
    QTimer* m_timer = nullptr;
    QElapsedTimer m_sinceShown;
    /// What the last update cost in nanoseconds of processor time: its layout and, once it is
    /// painted, its painting. What is painted later, as when the operator scrolls, does not count.
    qint64 m_cost = 0;
    bool m_isPainted = true;
    bool m_isShowing = false;
    bool m_isAtBottom = true;
};
