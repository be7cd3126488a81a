#pragma once

#include <QColor>
#include <QElapsedTimer>
#include <QTextEdit>
#include <QVector>

class QTextCursor;
class QTimer;

/// The view of what a port receives, made to take text at full rate for days.
///
/// Text that comes after a silence is shown at once. What comes while more is coming is gathered
/// and shown ten times a second, in one insertion and one repaint: painting, not layout, is what
/// costs. The oldest text goes: of all lines, and of a line that does not end, which is laid out as
/// a whole for each addition. New text moves neither the operator's cursor and selection nor what
/// the operator scrolled back to; a cursor at the end and a view scrolled to its end go along.
class ReceiveView : public QTextEdit
{
    Q_OBJECT

public:
    explicit ReceiveView(QWidget* parent);

    /// Adds text at the end, in the look of the text there.
    void AddText(const QString& text);

    /// Adds a coloured line at the end. What follows it is black.
    void AddLine(const QString& line, const QColor& colour);

    /// Forgets all text, the text not yet shown included.
    void Clear();

    /// Shows at once what is still gathered.
    void ShowGathered();

protected:
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
    /// What the last showing has cost so far, layout and painting, in nanoseconds.
    qint64 m_cost = 0;
    bool m_isShowing = false;
    bool m_isAtBottom = true;
};
