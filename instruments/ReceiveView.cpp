#include "instruments/ReceiveView.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTimer>

#include <ctime>

namespace
{

/// The time from one update to the next in milliseconds. Neither the eye nor the panel follows more
/// than ten a second; with the update itself, text waits for a tenth of a second at most.
const qint64 showInterval = 95;

/// The pause after an update is so many times as long as the update took, and at most so long, in
/// milliseconds. A board that is 25 times slower than a PC takes about 150 ms for the update of a
/// long line: it still has seven tenths of its time for the rest of the program. A longer pause
/// would win little time, but an operator who waits for a verdict would notice it.
const qint64 pausePerUpdate = 4;
const qint64 longestPause = 400;

/// More gathered text than this, in characters, is shown without waiting.
const int mostGathered = 100000;

/// What a view keeps. The oldest text is dropped when there is a quarter more than this.
const int keptLines = 20000;
const int keptCharacters = 2000000;
const int keptOfALine = 10000;

int Most(int kept)
{
    return kept + kept / 4;
}

/// The processor time of this thread in nanoseconds. An update that had to wait for other programs
/// has not cost more for that.
qint64 ProcessorTime()
{
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

} // namespace

ReceiveView::ReceiveView(QWidget* parent) : QTextEdit(parent)
{
    QFont large;
    large.setPixelSize(22);
    // Without kerning: it is half of what layout costs, and one letter with very many accents, as a
    // broken stream may hold, would take it seconds.
    large.setStyleStrategy(QFont::PreferNoShaping);
    setFont(large);
    // The Tab key moves the focus to the next widget instead of typing a tab.
    setTabChangesFocus(true);
    // The view paints its background itself. With the style sheet, Qt would take it for transparent
    // and paint everything behind it for each update.
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);

    m_timer = new QTimer(this);
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &ReceiveView::ShowOrWait);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this](int value) {
        if (!m_isShowing) {
            // A view that is at most one line above its end counts as being at its end.
            m_isAtBottom = value + fontMetrics().lineSpacing() >= verticalScrollBar()->maximum();
        }
    });
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this](int /*min*/, int max) {
        if (Follows()) {
            verticalScrollBar()->setValue(max);
        }
    });
}

void ReceiveView::AddText(const QString& text)
{
    QString lines(text.size(), Qt::Uninitialized);
    QChar* end = lines.data();
    for (const QChar c : text) {
        // A CR LF is one line end, also when it is torn between two texts.
        if (c != '\n' || !m_endsInReturn) {
            *end++ = c == '\r' ? QChar('\n') : c;
        }
        m_endsInReturn = c == '\r';
    }
    lines.truncate(static_cast<int>(end - lines.constData()));
    Gather(lines, QColor());
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
    m_sinceShown.invalidate();
    m_isPainted = true;
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
}

void ReceiveView::ShowOrWait()
{
    if (m_timer->isActive() && m_gatheredSize <= mostGathered) {
        return;
    }
    const qint64 cost = m_cost / 1000000;
    const qint64 pause = qMax(showInterval - cost, qMin(pausePerUpdate * cost, longestPause));
    const qint64 wait = m_sinceShown.isValid() ? pause - m_sinceShown.elapsed() : 0;
    if (wait <= 0 || m_gatheredSize > mostGathered) {
        ShowGathered();
    } else {
        m_timer->start(static_cast<int>(wait));
    }
}

void ReceiveView::ShowGathered()
{
    if (m_gathered.isEmpty()) {
        return;
    }
    const qint64 before = ProcessorTime();
    m_timer->stop();

    QScrollBar* scrollBar = verticalScrollBar();
    const QTextCursor operators = textCursor();
    const bool cursorGoesAlong = operators.atEnd() && !operators.hasSelection();
    QTextCursor anchor(document());
    anchor.setPosition(operators.anchor());
    anchor.setKeepPositionOnInsert(true);
    QTextCursor position(document());
    position.setPosition(operators.position());
    position.setKeepPositionOnInsert(true);
    const bool follows = Follows();
    const QTextCursor topmost = follows ? QTextCursor() : cursorForPosition(QPoint(0, 0));
    const int topmostAt = follows ? 0 : cursorRect(topmost).top();

    m_isShowing = true;
    // Received text cannot be undone: its history would grow without end. Text that the operator
    // typed after it can be undone.
    setUndoRedoEnabled(false);
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    InsertGathered(cursor);
    CutLastLine(cursor);
    cursor.endEditBlock();
    // Not in the edit block above: Qt lays out everything between the first and the last change of
    // a block again.
    DropOldestLines(cursor);
    setUndoRedoEnabled(!isReadOnly());

    const QTextCursor moved = textCursor();
    const bool isMoved =
        moved.anchor() != anchor.position() || moved.position() != position.position();
    if (!cursorGoesAlong && isMoved) {
        QTextCursor restored(document());
        restored.setPosition(anchor.position());
        restored.setPosition(position.position(), QTextCursor::KeepAnchor);
        setTextCursor(restored);
    }
    if (follows) {
        scrollBar->setValue(scrollBar->maximum());
    } else {
        scrollBar->setValue(scrollBar->value() + cursorRect(topmost).top() - topmostAt);
    }
    m_isShowing = false;

    m_cost = ProcessorTime() - before;
    m_isPainted = false;
    m_sinceShown.start();
}

// A press ends the selection. Otherwise the finger would drag its text to another place, and a tap
// that is handled as the drag begins may delete the page in the middle of this event.
void ReceiveView::mousePressEvent(QMouseEvent* event)
{
    if (event->modifiers() != Qt::ShiftModifier && textCursor().hasSelection()) {
        setTextCursor(cursorForPosition(event->pos()));
    }
    QTextEdit::mousePressEvent(event);
}

void ReceiveView::paintEvent(QPaintEvent* event)
{
    const qint64 before = ProcessorTime();
    QPainter(viewport()).fillRect(event->rect(), palette().base());
    QTextEdit::paintEvent(event);
    if (!m_isPainted) {
        m_cost += ProcessorTime() - before;
        m_isPainted = true;
        m_sinceShown.start();
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
}

void ReceiveView::CutLastLine(QTextCursor& cursor)
{
    const QTextBlock line = document()->lastBlock();
    if (line.length() <= Most(keptOfALine)) {
        return;
    }
    int cut = line.position() + line.length() - 1 - keptOfALine;
    if (document()->characterAt(cut).isLowSurrogate()) {
        --cut;
    }
    cursor.setPosition(line.position());
    cursor.setPosition(cut, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
}

void ReceiveView::DropOldestLines(QTextCursor& cursor)
{
    const int lines = document()->blockCount();
    const int characters = document()->characterCount();
    int first = 0;
    if (lines > Most(keptLines)) {
        first = lines - 1 - keptLines;
    }
    if (characters > Most(keptCharacters)) {
        first = qMax(first, document()->findBlock(characters - keptCharacters).blockNumber());
    }
    if (first == 0) {
        return;
    }
    cursor.setPosition(0);
    cursor.setPosition(document()->findBlockByNumber(first).position(), QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
}

/// Whether the view scrolls along with new text. It does while it shows its end, unless the
/// operator is typing elsewhere in it or selecting.
bool ReceiveView::Follows() const
{
    const QTextCursor operators = textCursor();
    const bool isBusy =
        operators.hasSelection() || (!isReadOnly() && hasFocus() && !operators.atEnd());
    return m_isAtBottom && !isBusy;
}
