#include "instruments/ReceiveView.h"

#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTimer>

namespace
{

/// The time from one update to the next in milliseconds. Neither the eye nor the panel follows more
/// than ten a second; with the update itself, text waits for a tenth of a second at most.
const qint64 showInterval = 95;

/// An update takes at most one part in so many of the time. This leaves time for the rest of the
/// program on a slow board.
const qint64 partsPerUpdate = 5;

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

    m_timer = new QTimer(this);
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &ReceiveView::ShowGathered);
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
    if (text.isEmpty()) {
        return;
    }
    // A CR LF that is torn between two texts is one line end.
    const bool isSecondHalf = m_endsInReturn && text.startsWith('\n');
    m_endsInReturn = text.endsWith('\r');
    QString lines = isSecondHalf ? text.mid(1) : text;
    Gather(lines.replace("\r\n", "\n").replace('\r', '\n'), QColor());
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
    const qint64 pause = qMax(showInterval, partsPerUpdate * m_cost / 1000000);
    const qint64 wait = m_sinceShown.isValid() ? pause - m_sinceShown.elapsed() : 0;
    if (wait <= 0 || m_gatheredSize > mostGathered) {
        ShowGathered();
    } else if (!m_timer->isActive()) {
        m_timer->start(static_cast<int>(wait));
    }
}

void ReceiveView::ShowGathered()
{
    if (m_gathered.isEmpty()) {
        return;
    }
    m_sinceShown.start();
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

    m_cost = m_sinceShown.nsecsElapsed();
}

void ReceiveView::paintEvent(QPaintEvent* event)
{
    QElapsedTimer spent;
    spent.start();
    QTextEdit::paintEvent(event);
    m_cost += spent.nsecsElapsed();
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
