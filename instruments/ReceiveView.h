#pragma once

#include <QColor>
#include <QElapsedTimer>
#include <QTextEdit>
#include <QVector>

class QTimer;

/// The view of what a port receives, made to take text at full rate for days.
///
/// Text is laid out a paragraph at a time, so each addition to a paragraph costs as much as the
/// whole of it. Short text is shown at once; what comes when that has become dear is gathered and
/// shown together, so that layout takes a bounded share of the GUI thread's time. Beyond a generous
/// bound the oldest text goes. New text moves neither the operator's cursor and selection nor what
/// the operator scrolled back to; a cursor at the end and a view scrolled to its end go along.
class ReceiveView : public QTextEdit
{
    Q_OBJECT

public:
    explicit ReceiveView(QWidget* parent);

    /// Keeps the newest `lines` lines, where those are more than the characters that any view
    /// keeps.
    void KeepLines(int lines);

    /// Adds text at the end, in the look of the text there.
    void AddText(const QString& text);

    /// Adds a coloured line at the end. What follows it is black.
    void AddLine(const QString& line, const QColor& colour);

    /// Forgets all text, the text not yet shown included.
    void Clear();

    /// Shows at once what is still gathered.
    void ShowGathered();

private:
    struct Run {
        QString text;
        QColor colour; ///< invalid: as the text before it
    };

    void Gather(const QString& text, const QColor& colour);
    void ShowOrWait();
    bool IsShort() const;
    qint64 Pause() const;
    int Surplus() const;
    void ForgetGathered(int count);
    void InsertGathered(QTextCursor& cursor);
    bool Follows() const;

    QVector<Run> m_gathered;
    int m_gatheredSize = 0;
    bool m_isShownOutdated = false;
    bool m_endsInReturn = false;
    int m_keptLines = 0;
    QTimer* m_timer = nullptr;
    QElapsedTimer m_sinceShown;
    qint64 m_cost = 0;
    bool m_isShowing = false;
    bool m_isAtBottom = true;
};
