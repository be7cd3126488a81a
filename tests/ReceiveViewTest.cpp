#include "instruments/ReceiveView.h"

#include "tests/EventLoopClock.h"

#include <QClipboard>
#include <QDrag>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimer>

#include <random>

namespace
{

const int keptOfALine = 10000;
const int keptLines = 20000;
const QColor green(12, 202, 66);

/// A text without line ends, in which each character shows its position.
QString Ruler(int size)
{
    QString ruler;
    ruler.reserve(size + 10);
    for (int i = 0; ruler.size() < size; ++i) {
        ruler += QString::number(i) + ' ';
    }
    return ruler.left(size);
}

/// The text that a text edit shows when it gets all of it at once.
QString AsShown(const QString& text)
{
    QTextEdit edit;
    edit.insertPlainText(text);
    return edit.toPlainText();
}

QColor ColourAt(const QTextEdit& view, int position)
{
    QTextCursor cursor(view.document());
    cursor.setPosition(position + 1);
    return cursor.charFormat().foreground().color();
}

/// When each piece of text came onto the screen: the first painting after its insertion.
class PaintedPieces : public QObject
{
public:
    explicit PaintedPieces(ReceiveView* view) : m_view(view)
    {
        view->viewport()->installEventFilter(this);
    }

    /// Adds a line. It must not be in the view yet.
    void Add(const QString& line)
    {
        m_waiting.append({line, m_clock.Elapsed()});
        m_view->AddText(line + '\n');
    }

    bool ArePainted() const { return m_waiting.isEmpty(); }

    /// The longest time from a line's coming to its painting, in milliseconds of the event loop.
    int LongestWait() const { return m_longestWait; }

private:
    bool eventFilter(QObject* /*viewport*/, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            const QString text = m_view->toPlainText();
            while (!m_waiting.isEmpty() && text.contains(m_waiting.first().first)) {
                m_longestWait =
                    qMax(m_longestWait, m_clock.Elapsed() - m_waiting.takeFirst().second);
            }
        }
        return false;
    }

    ReceiveView* m_view;
    EventLoopClock m_clock;
    QVector<QPair<QString, int>> m_waiting;
    int m_longestWait = 0;
};

/// The widgets that are painted from now on.
class PaintedWidgets : public QObject
{
public:
    PaintedWidgets() { qApp->installEventFilter(this); }

    bool Has(QObject* widget) const { return m_widgets.contains(widget); }

private:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            m_widgets.append(watched);
        }
        return false;
    }

    QObjectList m_widgets;
};

} // namespace

class ReceiveViewTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void lettersAreNotShaped();
    void firstTextShowsAtOnce();
    void textShowsAtOnceAfterASilence();
    void whatFollowsIsShownTogether();
    void floodIsShownBeforeItIsDue();
    void steadyTextIsOnShowSoon();
    void scrollingDelaysNoText();
    void slowLayoutDelaysTextBriefly();
    void updatePaintsNothingBehindTheView();
    void showsExactlyWhatWasAdded_data();
    void showsExactlyWhatWasAdded();
    void lineEndTornInTwoIsOne();
    void lineEndsApartAreTwo();
    void colouredLinesKeepTheirPlace();
    void colouredLinesKeepTheirPlaceWhenGathered();

    void oldestTextGoesWithoutLineEnds();
    void oldestLinesGo();
    void oldestOfLongLinesGo();
    void hugeAdditionKeepsItsEnd();
    void characterOfTwoHalvesIsNeverCut();
    void linesOutliveALongLine();
    void clearForgetsWhatIsGathered();

    void cursorAtTheEndGoesAlong();
    void cursorElsewhereStays();
    void cursorStaysAtItsTextWhenTheOldestGoes();
    void selectionStays();
    void selectedTextIsNotDragged();
    void viewScrollsAlong();
    void viewScrolledBackStays();
    void viewScrolledBackStaysWhenTheOldestGoes();
    void viewTypedInElsewhereDoesNotScroll();
    void viewLookedAtScrollsAlongWhateverWasTouched();
    void typedTextStaysAndCanBeUndone();
    void copyingTakesWhatIsShown();

private:
    void AddInChunks(const QString& text, int chunk);
    void Show(const QString& text);

    ReceiveView* m_view = nullptr;
};

void ReceiveViewTest::init()
{
    m_view = new ReceiveView(nullptr);
    m_view->resize(800, 400);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view));
}

void ReceiveViewTest::cleanup()
{
    delete m_view;
}

void ReceiveViewTest::AddInChunks(const QString& text, int chunk)
{
    for (int at = 0; at < text.size(); at += chunk) {
        m_view->AddText(text.mid(at, chunk));
    }
    m_view->ShowGathered();
}

/// Adds a text and shows it at once.
void ReceiveViewTest::Show(const QString& text)
{
    m_view->AddText(text);
    m_view->ShowGathered();
}

// Shaping is what takes seconds for one letter with very many accents.
void ReceiveViewTest::lettersAreNotShaped()
{
    m_view->ensurePolished();

    QVERIFY((m_view->font().styleStrategy() & QFont::PreferNoShaping) != 0);
    QCOMPARE(m_view->font().pixelSize(), 22);
}

void ReceiveViewTest::firstTextShowsAtOnce()
{
    m_view->AddText("first");
    QCOMPARE(m_view->toPlainText(), QString("first"));
    m_view->Clear();
    QCoreApplication::processEvents(); // paints
    m_view->AddLine("first of the next board", green);
    QCOMPARE(m_view->toPlainText(), QString("first of the next board\n"));
}

void ReceiveViewTest::textShowsAtOnceAfterASilence()
{
    m_view->AddText("one ");
    m_view->AddText("two ");
    QTRY_COMPARE(m_view->toPlainText(), QString("one two "));
    QTest::qWait(150);
    m_view->AddText("three");
    QCOMPARE(m_view->toPlainText(), QString("one two three"));
}

void ReceiveViewTest::whatFollowsIsShownTogether()
{
    QString expected = "first";
    m_view->AddText(expected);
    QSignalSpy changes(m_view->document(), &QTextDocument::contentsChanged);
    for (int i = 0; i < 1000; ++i) {
        const QString text = i % 3 == 0 ? "a line\n" : "id:291,len:8,data:1122334455667788";
        m_view->AddText(text);
        expected += text;
    }
    QCOMPARE(m_view->toPlainText(), QString("first"));
    const QTimer* timer = m_view->findChild<QTimer*>();
    QVERIFY(timer->isActive());
    QVERIFY2(timer->interval() <= 100, qPrintable(QString::number(timer->interval())));

    QTRY_COMPARE(m_view->toPlainText(), expected);
    // The document tells of the insertion and of the undo history that is switched off and on.
    QVERIFY2(changes.count() <= 4, qPrintable(QString::number(changes.count())));
    QVERIFY(!timer->isActive());
}

void ReceiveViewTest::floodIsShownBeforeItIsDue()
{
    m_view->AddText("first\n");
    m_view->AddText(QString("a line of a flood\n").repeated(10000));
    QCOMPARE(m_view->document()->blockCount(), 10002);
}

void ReceiveViewTest::steadyTextIsOnShowSoon()
{
    PaintedPieces pieces(m_view);
    for (int i = 0; i < 50; ++i) {
        pieces.Add(QString("piece %1.").arg(i));
        QTest::qWait(20);
    }
    QTRY_VERIFY(pieces.ArePainted());
    QVERIFY2(pieces.LongestWait() <= 150, qPrintable(QString::number(pieces.LongestWait())));
}

void ReceiveViewTest::scrollingDelaysNoText()
{
    Show(QString("a line\n").repeated(1000));
    QScrollBar* bar = m_view->verticalScrollBar();
    QElapsedTimer scrolling;
    scrolling.start();
    for (int i = 1; scrolling.elapsed() < 3000; ++i) {
        bar->setValue(bar->maximum() - i % 500);
        QCoreApplication::processEvents();
    }
    m_view->AddText("next");
    QVERIFY(m_view->toPlainText().endsWith("next"));
}

void ReceiveViewTest::slowLayoutDelaysTextBriefly()
{
    Show(QString("a line of a flood\n").repeated(20000));
    const EventLoopClock clock;
    m_view->AddText("next");
    // The rest of the program has its turn first.
    QVERIFY(!m_view->toPlainText().endsWith("next"));
    QTRY_VERIFY(m_view->toPlainText().endsWith("next"));
    QVERIFY2(clock.Elapsed() <= 500, qPrintable(QString::number(clock.Elapsed())));
}

void ReceiveViewTest::updatePaintsNothingBehindTheView()
{
    QWidget page;
    page.setStyleSheet("QTextEdit { border: 1px solid rgb(40,40,40); }");
    auto* view = new ReceiveView(&page);
    view->setGeometry(10, 10, 300, 200);
    page.resize(400, 300);
    page.show();
    QVERIFY(QTest::qWaitForWindowExposed(&page));
    QTRY_COMPARE(page.grab().toImage().pixelColor(150, 150), QColor(Qt::white));
    QCoreApplication::processEvents();

    PaintedWidgets painted;
    view->AddText("text");
    QTRY_VERIFY(painted.Has(view->viewport()));
    QVERIFY(!painted.Has(&page));
}

void ReceiveViewTest::showsExactlyWhatWasAdded_data()
{
    QTest::addColumn<QString>("alphabet");
    QTest::addColumn<int>("size");

    QTest::newRow("short, no line ends") << "abc :,." << 5000;
    QTest::newRow("long, no line ends") << "abc :,." << keptOfALine;
    QTest::newRow("line feeds") << "abc \n" << 30000;
    QTest::newRow("carriage returns") << "abc \r" << 30000;
    QTest::newRow("both") << "abcdefgh \r\n" << 30000;
    QTest::newRow("nothing but line ends") << "\r\n" << 5000;
    QTest::newRow("blanks and tabs") << " \t " << keptOfALine;
    QTest::newRow("not Latin") << QString::fromUtf8("端口 接收\nмир") << 30000;
}

void ReceiveViewTest::showsExactlyWhatWasAdded()
{
    QFETCH(QString, alphabet);
    QFETCH(int, size);
    std::mt19937 random(7);
    QString text;
    for (int i = 0; i < size; ++i) {
        text += alphabet.at(static_cast<int>(random() % alphabet.size()));
    }
    for (int at = 0; at < size;) {
        const int chunk = 1 + static_cast<int>(random() % 700);
        m_view->AddText(text.mid(at, chunk));
        at += chunk;
        if (random() % 10 == 0) {
            QCoreApplication::processEvents();
        }
    }
    m_view->ShowGathered();
    QCOMPARE(m_view->toPlainText(), AsShown(text));
}

void ReceiveViewTest::lineEndTornInTwoIsOne()
{
    Show("one\r");
    QCOMPARE(m_view->toPlainText(), QString("one\n"));
    Show("");
    Show("\ntwo\r");
    Show("\n");
    QCOMPARE(m_view->toPlainText(), QString("one\ntwo\n"));
}

void ReceiveViewTest::lineEndsApartAreTwo()
{
    m_view->AddText("one\r");
    m_view->AddLine("******** result", green);
    m_view->AddText("\ntwo\r");
    m_view->AddText("\r");
    Show("three");
    QCOMPARE(m_view->toPlainText(), QString("one\n******** result\n\ntwo\n\nthree"));

    m_view->AddText("\r");
    m_view->Clear();
    m_view->AddText("\nfour");
    QCOMPARE(m_view->toPlainText(), QString("\nfour"));
}

void ReceiveViewTest::colouredLinesKeepTheirPlace()
{
    m_view->AddLine("good", green);
    m_view->AddText("raw");
    m_view->AddText("\n");
    m_view->AddLine("bad", Qt::red);
    Show("more");
    const QString text = m_view->toPlainText();
    QCOMPARE(text, QString("good\nraw\nbad\nmore"));
    QCOMPARE(ColourAt(*m_view, text.indexOf("good")), green);
    QCOMPARE(ColourAt(*m_view, text.indexOf("raw")), QColor(Qt::black));
    QCOMPARE(ColourAt(*m_view, text.indexOf("bad")), QColor(Qt::red));
    QCOMPARE(ColourAt(*m_view, text.indexOf("more")), QColor(Qt::black));
}

void ReceiveViewTest::colouredLinesKeepTheirPlaceWhenGathered()
{
    m_view->AddLine("port opened", green);
    QString expected = "port opened\n";
    for (int i = 0; i < 5000; ++i) {
        m_view->AddText(QString("[%1] raw line of the log\n").arg(i));
        expected += QString("[%1] raw line of the log\n").arg(i);
        if (i % 100 == 0) {
            const bool ok = i % 200 == 0;
            m_view->AddLine(QString("result %1").arg(i), ok ? green : QColor(Qt::red));
            expected += QString("result %1\n").arg(i);
        }
    }
    QTRY_COMPARE(m_view->toPlainText(), expected);
    for (int i = 0; i < 5000; i += 100) {
        const int at = expected.indexOf(QString("result %1\n").arg(i));
        QCOMPARE(ColourAt(*m_view, at), i % 200 == 0 ? green : QColor(Qt::red));
        QCOMPARE(ColourAt(*m_view, at - 2), QColor(Qt::black));
    }
}

void ReceiveViewTest::oldestTextGoesWithoutLineEnds()
{
    const QString ruler = Ruler(200000);
    for (int at = 0; at < ruler.size(); at += 1000) {
        Show(ruler.mid(at, 1000));
    }
    const QString shown = m_view->toPlainText();
    QVERIFY(shown.size() >= keptOfALine);
    QVERIFY(shown.size() <= keptOfALine * 5 / 4);
    QVERIFY(ruler.endsWith(shown));
}

void ReceiveViewTest::oldestLinesGo()
{
    QString all;
    for (int i = 0; i < 60000; ++i) {
        const QString line =
            QString("[%1] a line of the log, as long as such lines are\r\n").arg(i);
        m_view->AddText(line);
        all += line;
    }
    m_view->ShowGathered();
    const QString shown = m_view->toPlainText();
    const int lines = shown.count('\n');
    QVERIFY2(lines >= keptLines, qPrintable(QString::number(lines)));
    QVERIFY2(lines <= keptLines * 5 / 4, qPrintable(QString::number(lines)));
    QVERIFY(all.replace("\r\n", "\n").endsWith(shown));
    QVERIFY(shown.startsWith('['));
}

void ReceiveViewTest::oldestOfLongLinesGo()
{
    QString all;
    for (int i = 0; i < 400; ++i) {
        const QString line = Ruler(keptOfALine) + '\n';
        Show(line);
        all += line;
    }
    const QString shown = m_view->toPlainText();
    QVERIFY(shown.size() >= 1900000);
    QVERIFY(shown.size() <= 2600000);
    QVERIFY(all.endsWith(shown));
    QVERIFY(shown.startsWith("0 1 2 "));
}

void ReceiveViewTest::hugeAdditionKeepsItsEnd()
{
    m_view->AddText("before");
    const QString ruler = Ruler(1000000);
    Show(ruler);
    const QString shown = m_view->toPlainText();
    QVERIFY(shown.size() >= keptOfALine);
    QVERIFY(shown.size() <= keptOfALine * 5 / 4);
    QVERIFY(ruler.endsWith(shown));
}

void ReceiveViewTest::characterOfTwoHalvesIsNeverCut()
{
    const QString musicalNote = QString::fromUtf8("\xF0\x9D\x85\xA1");
    QCOMPARE(musicalNote.size(), 2);
    Show("x");
    // Odd and even amounts, so that the bound falls between two halves once.
    for (const int count : {20000, 3, 20001, 7000, 1, 10000}) {
        Show(musicalNote.repeated(count));
        Show(count % 2 == 1 ? "y" : "");
        const QString shown = m_view->toPlainText();
        QVERIFY(!shown.at(0).isLowSurrogate());
        QVERIFY(shown.size() >= std::min(keptOfALine, 2 * count));
    }
}

void ReceiveViewTest::linesOutliveALongLine()
{
    QString lines;
    for (int i = 0; i < 5000; ++i) {
        lines += QString("line %1\n").arg(i);
    }
    const QString ruler = Ruler(600000);
    const QString all = lines + ruler + "\nlast";
    for (int at = 0; at < all.size(); at += 5000) {
        Show(all.mid(at, 5000));
    }
    const QString shown = m_view->toPlainText();
    QVERIFY(shown.startsWith(lines));
    QVERIFY(shown.endsWith(ruler.right(keptOfALine) + "\nlast"));
    QVERIFY(shown.size() < lines.size() + 2 * keptOfALine);
}

void ReceiveViewTest::clearForgetsWhatIsGathered()
{
    m_view->AddText(Ruler(30000));
    m_view->AddText("gathered");
    m_view->Clear();
    QCOMPARE(m_view->toPlainText(), QString());
    m_view->ShowGathered();
    QCOMPARE(m_view->toPlainText(), QString());
    m_view->AddText("new");
    QCOMPARE(m_view->toPlainText(), QString("new"));
}

void ReceiveViewTest::cursorAtTheEndGoesAlong()
{
    m_view->AddText("one");
    QVERIFY(m_view->textCursor().atEnd());
    Show("two\n");
    QVERIFY(m_view->textCursor().atEnd());
}

void ReceiveViewTest::cursorElsewhereStays()
{
    m_view->AddText("received");
    QTextCursor cursor = m_view->textCursor();
    cursor.setPosition(3);
    m_view->setTextCursor(cursor);
    m_view->setFocus();
    QTest::keyClicks(m_view, "ab");
    Show(" more");
    QTest::keyClicks(m_view, "c");
    QCOMPARE(m_view->toPlainText(), QString("recabceived more"));
    QCOMPARE(m_view->textCursor().position(), 6);
}

void ReceiveViewTest::cursorStaysAtItsTextWhenTheOldestGoes()
{
    Show(Ruler(keptOfALine));
    const int at = keptOfALine - 1000;
    QTextCursor cursor = m_view->textCursor();
    cursor.setPosition(at);
    m_view->setTextCursor(cursor);
    const QString behind = m_view->toPlainText().mid(at, 20);
    Show(Ruler(keptOfALine / 2));
    QVERIFY(m_view->textCursor().position() < at);
    QCOMPARE(m_view->toPlainText().mid(m_view->textCursor().position(), 20), behind);
}

void ReceiveViewTest::selectionStays()
{
    m_view->AddText("received");
    m_view->selectAll();
    Show(" more");
    QCOMPARE(m_view->textCursor().selectedText(), QString("received"));

    // Backwards, from the end.
    QTextCursor cursor = m_view->textCursor();
    cursor.movePosition(QTextCursor::End);
    cursor.movePosition(QTextCursor::Left, QTextCursor::KeepAnchor, 4);
    m_view->setTextCursor(cursor);
    Show(" and more");
    QCOMPARE(m_view->textCursor().selectedText(), QString("more"));
    QVERIFY(m_view->textCursor().position() < m_view->textCursor().anchor());
}

void ReceiveViewTest::selectedTextIsNotDragged()
{
    Show("one two three");
    m_view->selectAll();
    const auto send = [this](QEvent::Type type, int position, Qt::MouseButtons held) {
        QTextCursor cursor(m_view->document());
        cursor.setPosition(position);
        const QPoint place = m_view->cursorRect(cursor).center();
        QMouseEvent event(type, place, m_view->viewport()->mapToGlobal(place), Qt::LeftButton, held,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(m_view->viewport(), &event);
    };
    // A drag would wait for its end in an event loop of its own.
    bool hasWaited = false;
    QTimer::singleShot(0, m_view, [&hasWaited] {
        hasWaited = true;
        QDrag::cancel();
    });

    send(QEvent::MouseButtonPress, 4, Qt::LeftButton);
    send(QEvent::MouseMove, 7, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, 7, Qt::NoButton);

    QVERIFY(!hasWaited);
    QCOMPARE(m_view->textCursor().selectedText(), QString("two"));
}

void ReceiveViewTest::viewScrollsAlong()
{
    QScrollBar* bar = m_view->verticalScrollBar();
    for (int i = 0; i < 300; ++i) {
        Show(QString("line %1\n").arg(i));
        QCOMPARE(bar->value(), bar->maximum());
    }
    QVERIFY(bar->maximum() > 0);
    Show(Ruler(25000));
    QTRY_COMPARE(bar->value(), bar->maximum());
    m_view->resize(500, 300);
    QTRY_COMPARE(bar->value(), bar->maximum());
}

void ReceiveViewTest::viewScrolledBackStays()
{
    QScrollBar* bar = m_view->verticalScrollBar();
    AddInChunks(QString("line\n").repeated(300), 5);
    bar->triggerAction(QAbstractSlider::SliderPageStepSub);
    const int value = bar->value();
    QVERIFY(value < bar->maximum());
    AddInChunks(QString("more\n").repeated(300), 5);
    QCOMPARE(bar->value(), value);

    bar->triggerAction(QAbstractSlider::SliderToMaximum);
    Show("last\n");
    QCOMPARE(bar->value(), bar->maximum());
}

void ReceiveViewTest::viewScrolledBackStaysWhenTheOldestGoes()
{
    QScrollBar* bar = m_view->verticalScrollBar();
    QString text;
    for (int i = 0; i < 24000; ++i) {
        text += QString("line %1\n").arg(i);
    }
    Show(text);
    bar->setValue(bar->maximum() * 9 / 10);
    const auto topLine = [this] { return m_view->cursorForPosition(QPoint(5, 5)).block().text(); };
    const QString before = topLine();
    const int size = m_view->document()->characterCount();
    Show(QString("more\n").repeated(3000));
    QVERIFY(m_view->document()->characterCount() < size);
    QCOMPARE(topLine(), before);
}

void ReceiveViewTest::viewTypedInElsewhereDoesNotScroll()
{
    QScrollBar* bar = m_view->verticalScrollBar();
    AddInChunks(QString("line\n").repeated(300), 5);
    m_view->activateWindow();
    m_view->setFocus();
    QTRY_VERIFY(m_view->hasFocus());
    QTest::keyClick(m_view, Qt::Key_Up);
    QTest::keyClick(m_view, Qt::Key_Up);
    const int value = bar->value();
    AddInChunks(QString("more\n").repeated(100), 5);
    QCOMPARE(bar->value(), value);
    // Back at the end it goes along again.
    QTest::keyClick(m_view, Qt::Key_End, Qt::ControlModifier);
    Show("last\n");
    QCOMPARE(bar->value(), bar->maximum());
}

void ReceiveViewTest::viewLookedAtScrollsAlongWhateverWasTouched()
{
    QScrollBar* bar = m_view->verticalScrollBar();
    m_view->setReadOnly(true);
    AddInChunks(QString("line\n").repeated(300), 5);
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    AddInChunks(QString("more\n").repeated(100), 5);
    QCOMPARE(bar->value(), bar->maximum());
}

void ReceiveViewTest::typedTextStaysAndCanBeUndone()
{
    m_view->AddText("received");
    m_view->setFocus();
    QTest::keyClicks(m_view, "typed");
    QCOMPARE(m_view->toPlainText(), QString("receivedtyped"));
    m_view->undo();
    QCOMPARE(m_view->toPlainText(), QString("received"));
    // What a port received is not the operator's to undo.
    m_view->undo();
    QCOMPARE(m_view->toPlainText(), QString("received"));

    QTest::keyClicks(m_view, "typed");
    Show(" more");
    QCOMPARE(m_view->toPlainText(), QString("receivedtyped more"));
}

void ReceiveViewTest::copyingTakesWhatIsShown()
{
    m_view->AddText("one\ntwo");
    m_view->selectAll();
    m_view->copy();
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("one\ntwo"));
}

QTEST_MAIN(ReceiveViewTest)
#include "ReceiveViewTest.moc"
