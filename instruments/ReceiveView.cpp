#include "instruments/ReceiveView.h"

#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTimer>

#include <algorithm>

namespace
{

/// Text is shown at once while the paragraph it goes to and the whole view are below these.
const int shortParagraph = 10000;
const int shortText = 100000;

/// The newest characters that a view keeps, and the size at which it drops those before them. A
/// view that keeps lines drops them only when a single line or all of them are beyond reason.
const int keptCharacters = 200000;
const int droppedAbove = 250000;
const int longestLine = 1000000;
const int mostCharacters = 8000000;

/// Lines cost their own layout only, so gathering more of them at once than these saves nothing.
const int mostGatheredLines = 32768;

/// Between two showings the GUI thread has four times as long for all else. The newest text does
/// not wait longer than this for it, but where layout is slow twice as long must be left.
const qint64 pausesPerCost = 4;
const qint64 longestPause = 100;
const qint64 leastPausesPerCost = 2;

} // namespace

ReceiveView::ReceiveView(QWidget* parent) : QTextEdit(parent)
{
    m_timer = new QTimer(this);
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &ReceiveView::ShowGathered);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this](int value) {
        if (!m_isShowing) {
            // The last line in sight is the end, if only just.
            m_isAtBottom = value + fontMetrics().lineSpacing() >= verticalScrollBar()->maximum();
        }
    });
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this](int /*min*/, int max) {
        if (Follows()) {
            verticalScrollBar()->setValue(max);
        }
    });
}

void ReceiveView::KeepLines(int lines)
{
    m_keptLines = lines;
}

void ReceiveView::AddText(const QString& text)
{
    // The two halves of a torn CR LF are one line end, however they came.
    const bool isSecondHalf = m_endsInReturn && text.startsWith('\n');
    Gather(isSecondHalf ? text.mid(1) : text, QColor());
    if (!text.isEmpty()) {
        m_endsInReturn = text.endsWith('\r');
    }
    ShowOrWait();
}

void ReceiveView::AddLine(const QString& line, const QColor& colour)
{
    Gather(line, colour);
    Gather("\n", QColor(0, 0, 0));
    m_endsInReturn = false;
    ShowOrWait();
}

void ReceiveView::Clear()
{
    m_timer->stop();
    m_gathered.clear();
    m_gatheredSize = 0;
    m_isShownOutdated = false;
    m_endsInReturn = false;
    m_isAtBottom = true;
    clear();
}

void ReceiveView::Gather(const QString& text, const QColor& colour)
{
    if (text.isEmpty()) {
        return;
    }
    if (!m_gathered.isEmpty() && m_gathered.last().colour == colour) {
        m_gathered.last().text += text;
    } else {
        m_gathered.append({text, colour});
    }
    m_gatheredSize += text.size();
    if (m_keptLines == 0 && m_gatheredSize > droppedAbove) {
        ForgetGathered(m_gatheredSize - keptCharacters);
        // All that was shown is older still.
        m_isShownOutdated = true;
    }
}

void ReceiveView::ShowOrWait()
{
    if (m_gathered.isEmpty()) {
        return;
    }
    const qint64 wait = Pause() - m_sinceShown.elapsed();
    if (IsShort() || !m_sinceShown.isValid() || wait <= 0) {
        ShowGathered();
    } else if (!m_timer->isActive()) {
        m_timer->start(static_cast<int>(wait));
    }
}

/// Whether showing what is gathered costs little, or little beside the amount of it.
bool ReceiveView::IsShort() const
{
    const int paragraph = document()->lastBlock().length();
    if (paragraph + m_gatheredSize < shortParagraph && document()->characterCount() < shortText) {
        return true;
    }
    return paragraph < shortParagraph && m_gatheredSize > mostGatheredLines;
}

/// How many milliseconds the rest of the program has between two showings.
qint64 ReceiveView::Pause() const
{
    const qint64 cost = m_cost / 1000000;
    return std::min(pausesPerCost * cost, std::max(longestPause, leastPausesPerCost * cost));
}

void ReceiveView::ShowGathered()
{
    if (m_gathered.isEmpty()) {
        return;
    }
    QElapsedTimer spent;
    spent.start();
    m_timer->stop();

    QScrollBar* scrollBar = verticalScrollBar();
    const QTextCursor operators = textCursor();
    const bool cursorGoesAlong = operators.atEnd() && !operators.hasSelection();
    const bool follows = Follows();
    const int scrolledTo = scrollBar->value();
    const QTextCursor topmost = follows ? QTextCursor() : cursorForPosition(QPoint(0, 0));
    const int topmostAt = follows ? 0 : cursorRect(topmost).top();
    const int anchor = operators.anchor();
    const int position = operators.position();

    m_isShowing = true;
    // Nobody undoes what a port received, and its history would grow without end. What the operator
    // typed since can be undone.
    setUndoRedoEnabled(false);
    const int surplus = Surplus();
    const int dropped = std::min(surplus, document()->characterCount() - 1);
    ForgetGathered(surplus - dropped);

    // One paragraph is laid out as a whole in any case, so once for both changes. Many are laid out
    // between the first and the last change, so the two ends are better changed apart.
    QTextCursor cursor(document());
    const bool atOnce = document()->blockCount() == 1;
    if (atOnce) {
        cursor.beginEditBlock();
    }
    cursor.setPosition(dropped, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    if (!atOnce) {
        cursor.beginEditBlock();
    }
    InsertGathered(cursor);
    cursor.endEditBlock();
    setUndoRedoEnabled(!isReadOnly());

    if (!cursorGoesAlong) {
        QTextCursor kept(document());
        kept.setPosition(std::max(0, anchor - dropped));
        kept.setPosition(std::max(0, position - dropped), QTextCursor::KeepAnchor);
        if (kept.position() != textCursor().position() || kept.anchor() != textCursor().anchor()) {
            setTextCursor(kept);
        }
    }
    if (follows) {
        scrollBar->setValue(scrollBar->maximum());
    } else {
        scrollBar->setValue(scrolledTo);
        scrollBar->setValue(scrolledTo + cursorRect(topmost).top() - topmostAt);
    }
    m_isShowing = false;

    m_cost = spent.nsecsElapsed();
    m_sinceShown.start();
}

/// How many of the oldest characters are to go before the gathered ones are shown.
int ReceiveView::Surplus() const
{
    if (m_isShownOutdated) {
        return document()->characterCount() - 1;
    }
    const int size = document()->characterCount() - 1 + m_gatheredSize;
    if (size <= droppedAbove) {
        return 0;
    }
    int surplus = size - keptCharacters;
    const int line = document()->lastBlock().length() + m_gatheredSize;
    const bool isLog = line <= longestLine && size <= mostCharacters;
    if (m_keptLines > 0 && isLog) {
        const int lines = document()->blockCount();
        if (lines < m_keptLines + m_keptLines / 10) {
            return 0;
        }
        surplus =
            std::min(surplus, document()->findBlockByNumber(lines - 1 - m_keptLines).position());
    }
    return document()->characterAt(surplus).isLowSurrogate() ? surplus + 1 : surplus;
}

/// Forgets the oldest of the gathered characters.
void ReceiveView::ForgetGathered(int count)
{
    while (count > 0 && !m_gathered.isEmpty()) {
        Run& oldest = m_gathered.first();
        int cut = std::min(count, oldest.text.size());
        count -= cut;
        if (cut < oldest.text.size() && oldest.text.at(cut).isLowSurrogate()) {
            ++cut;
        }
        m_gatheredSize -= cut;
        if (cut == oldest.text.size()) {
            m_gathered.removeFirst();
        } else {
            oldest.text.remove(0, cut);
        }
    }
}

void ReceiveView::InsertGathered(QTextCursor& cursor)
{
    cursor.movePosition(QTextCursor::End);
    for (const Run& run : qAsConst(m_gathered)) {
        if (run.colour.isValid()) {
            QTextCharFormat format = cursor.charFormat();
            format.setForeground(run.colour);
            cursor.insertText(run.text, format);
        } else {
            cursor.insertText(run.text);
        }
    }
    m_gathered.clear();
    m_gatheredSize = 0;
    m_isShownOutdated = false;
}

/// Whether the view scrolls along with new text: while it shows its end, and the operator is
/// neither typing elsewhere nor selecting.
bool ReceiveView::Follows() const
{
    const QTextCursor operators = textCursor();
    const bool isBusy =
        operators.hasSelection() || (!isReadOnly() && hasFocus() && !operators.atEnd());
    return m_isAtBottom && !isBusy;
}
