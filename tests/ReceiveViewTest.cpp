#include "instruments/ReceiveView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>

#include <random>

namespace
{

const int kept = 200000;
const QColor green(12, 202, 66);

/// Text in which each character tells where it stands, without line ends.
QString Ruler(int size)
{
    QString ruler;
    ruler.reserve(size + 10);
    for (int i = 0; ruler.size() < size; ++i) {
        ruler += QString::number(i) + ' ';
    }
    return ruler.left(size);
}

/// What a text edit shows of a text given to it at once.
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

} // namespace

class ReceiveViewTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void shortTextShowsInTheSameTurn();
    void shortTextShowsAtOnceAfterASilence();
    void longTextShowsByItself();
    void longTextIsGathered();
    void showsExactlyWhatWasAdded_data();
    void showsExactlyWhatWasAdded();
    void lineEndTornInTwoIsOne();
    void lineEndsApartAreTwo();
    void colouredLinesKeepTheirPlace();
    void colouredLinesKeepTheirPlaceWhenGathered();

    void oldestTextGoesWithoutLineEnds();
    void oldestTextGoesWithLineEnds();
    void hugeAdditionKeepsItsEnd();
    void characterOfTwoHalvesIsNeverCut();
    void keptLinesStay();
    void keptLinesOutliveALongLine();
    void endlessLineInALogIsBounded();
    void clearForgetsWhatIsGathered();

    void cursorAtTheEndGoesAlong();
    void cursorElsewhereStays();
    void cursorStaysAtItsTextWhenTheOldestGoes();
    void selectionStays();
    void viewScrollsAlong();
    void viewScrolledBackStays();
    void viewScrolledBackStaysWhenTheOldestGoes();
    void viewTypedInElsewhereDoesNotScroll();
    void viewLookedAtScrollsAlongWhateverWasTouched();
    void typedTextStaysAndCanBeUndone();
    void copyingTakesWhatIsShown();

private:
    void AddInChunks(const QString& text, int chunk);

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
}

void ReceiveViewTest::shortTextShowsInTheSameTurn()
{
    QString expected;
    for (int i = 0; i < 200; ++i) {
        m_view->AddText("id:291,len:8,data:1122334455667788");
        expected += "id:291,len:8,data:1122334455667788";
        QCOMPARE(m_view->toPlainText(), expected);
    }
    for (int i = 0; i < 200; ++i) {
        m_view->AddText("\n[104.602] sparse: chunk");
        expected += "\n[104.602] sparse: chunk";
        QCOMPARE(m_view->toPlainText(), expected);
    }
}

void ReceiveViewTest::shortTextShowsAtOnceAfterASilence()
{
    const QString ruler = Ruler(30000);
    m_view->AddText(ruler);
    m_view->AddText("gathered ");
    QTRY_COMPARE(m_view->toPlainText(), ruler + "gathered ");
    // Longer than any pause that layout of this much can have been given.
    QTest::qWait(1500);
    m_view->AddText("at once");
    QCOMPARE(m_view->toPlainText(), ruler + "gathered at once");
}

void ReceiveViewTest::longTextShowsByItself()
{
    const QString ruler = Ruler(60000);
    AddInChunks(ruler, 1000);
    QTRY_COMPARE(m_view->toPlainText(), ruler);
}

void ReceiveViewTest::longTextIsGathered()
{
    m_view->AddText(Ruler(30000));
    QSignalSpy changes(m_view->document(), &QTextDocument::contentsChanged);
    for (int i = 0; i < 20000; ++i) {
        m_view->AddText("id:291,len:8,data:1122334455667788");
        if (i % 100 == 0) {
            QCoreApplication::processEvents();
        }
    }
    QVERIFY2(changes.count() < 2000, qPrintable(QString::number(changes.count())));
}

void ReceiveViewTest::showsExactlyWhatWasAdded_data()
{
    QTest::addColumn<QString>("alphabet");
    QTest::addColumn<int>("size");

    QTest::newRow("short, no line ends") << "abc :,." << 5000;
    QTest::newRow("long, no line ends") << "abc :,." << 150000;
    QTest::newRow("line feeds") << "abc \n" << 30000;
    QTest::newRow("carriage returns") << "abc \r" << 30000;
    QTest::newRow("both") << "abcdefgh \r\n" << 30000;
    QTest::newRow("nothing but line ends") << "\r\n" << 5000;
    QTest::newRow("blanks and tabs") << " \t " << 20000;
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
    m_view->AddText("one\r");
    QCOMPARE(m_view->toPlainText(), QString("one\n"));
    m_view->AddText("");
    m_view->AddText("\ntwo\r");
    m_view->AddText("\n");
    QCOMPARE(m_view->toPlainText(), QString("one\ntwo\n"));
}

void ReceiveViewTest::lineEndsApartAreTwo()
{
    m_view->AddText("one\r");
    m_view->AddLine("******** result", green);
    m_view->AddText("\ntwo\r");
    m_view->AddText("\r");
    m_view->AddText("three");
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
    m_view->AddText("more");
    const QString text = m_view->toPlainText();
    QCOMPARE(text, QString("good\nraw\nbad\nmore"));
    QCOMPARE(ColourAt(*m_view, text.indexOf("good")), green);
    QCOMPARE(ColourAt(*m_view, text.indexOf("raw")), QColor(Qt::black));
    QCOMPARE(ColourAt(*m_view, text.indexOf("bad")), QColor(Qt::red));
    QCOMPARE(ColourAt(*m_view, text.indexOf("more")), QColor(Qt::black));
}

void ReceiveViewTest::colouredLinesKeepTheirPlaceWhenGathered()
{
    m_view->KeepLines(20000);
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
    const QString ruler = Ruler(1000000);
    for (int at = 0; at < ruler.size(); at += 1000) {
        m_view->AddText(ruler.mid(at, 1000));
        QCoreApplication::processEvents();
    }
    m_view->ShowGathered();
    const QString shown = m_view->toPlainText();
    QVERIFY(shown.size() >= kept);
    QVERIFY(shown.size() <= kept * 5 / 4);
    QVERIFY(ruler.endsWith(shown));
}

void ReceiveViewTest::oldestTextGoesWithLineEnds()
{
    QString all;
    for (int i = 0; i < 20000; ++i) {
        const QString line = QString("line %1 of what was received\n").arg(i);
        m_view->AddText(line);
        all += line;
        if (i % 50 == 0) {
            QCoreApplication::processEvents();
        }
    }
    m_view->ShowGathered();
    const QString shown = m_view->toPlainText();
    QVERIFY(shown.size() >= kept);
    QVERIFY(shown.size() <= kept * 5 / 4);
    QVERIFY(all.endsWith(shown));
}

void ReceiveViewTest::hugeAdditionKeepsItsEnd()
{
    m_view->AddText("before");
    const QString ruler = Ruler(1000000);
    m_view->AddText(ruler);
    m_view->ShowGathered();
    const QString shown = m_view->toPlainText();
    QVERIFY(shown.size() >= kept);
    QVERIFY(shown.size() <= kept * 5 / 4);
    QVERIFY(ruler.endsWith(shown));
}

void ReceiveViewTest::characterOfTwoHalvesIsNeverCut()
{
    const QString musicalNote = QString::fromUtf8("\xF0\x9D\x85\xA1");
    QCOMPARE(musicalNote.size(), 2);
    m_view->AddText("x");
    // Odd and even amounts, so that every bound falls between two halves once.
    for (const int count : {130000, 3, 130001, 30000, 1, 40000}) {
        m_view->AddText(musicalNote.repeated(count));
        m_view->ShowGathered();
        m_view->AddText(count % 2 == 1 ? "y" : "");
        m_view->ShowGathered();
        const QString shown = m_view->toPlainText();
        QVERIFY(!shown.at(0).isLowSurrogate());
        QVERIFY(shown.size() >= std::min(kept, 2 * count));
    }
}

void ReceiveViewTest::keptLinesStay()
{
    m_view->KeepLines(20000);
    QString all;
    for (int i = 0; i < 60000; ++i) {
        const QString line =
            QString("[%1] a line of the log, as long as such lines are\r\n").arg(i);
        m_view->AddText(line);
        all += line;
        if (i % 100 == 0) {
            QCoreApplication::processEvents();
        }
    }
    m_view->ShowGathered();
    const QString shown = m_view->toPlainText();
    const int lines = shown.count('\n');
    QVERIFY2(lines >= 20000, qPrintable(QString::number(lines)));
    QVERIFY2(lines <= 24000, qPrintable(QString::number(lines)));
    QVERIFY(all.replace("\r\n", "\n").endsWith(shown));
    QVERIFY(shown.startsWith('['));
}

void ReceiveViewTest::keptLinesOutliveALongLine()
{
    m_view->KeepLines(20000);
    QString all;
    for (int i = 0; i < 5000; ++i) {
        all += QString("line %1\n").arg(i);
    }
    all += Ruler(600000) + "\nlast";
    for (int at = 0; at < all.size(); at += 5000) {
        m_view->AddText(all.mid(at, 5000));
        QCoreApplication::processEvents();
    }
    m_view->ShowGathered();
    QVERIFY(m_view->toPlainText() == all);
}

void ReceiveViewTest::endlessLineInALogIsBounded()
{
    m_view->KeepLines(20000);
    const QString ruler = Ruler(2000000);
    m_view->AddText("line\n");
    for (int at = 0; at < ruler.size(); at += 50000) {
        m_view->AddText(ruler.mid(at, 50000));
        QCoreApplication::processEvents();
    }
    m_view->ShowGathered();
    const QString shown = m_view->toPlainText();
    QVERIFY(shown.size() >= kept);
    QVERIFY(shown.size() <= 1500000);
    QVERIFY(ruler.endsWith(shown));
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
    m_view->AddText("two\n");
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
    m_view->AddText(" more");
    QTest::keyClicks(m_view, "c");
    QCOMPARE(m_view->toPlainText(), QString("recabceived more"));
    QCOMPARE(m_view->textCursor().position(), 6);
}

void ReceiveViewTest::cursorStaysAtItsTextWhenTheOldestGoes()
{
    m_view->AddText(Ruler(249000));
    QTextCursor cursor = m_view->textCursor();
    cursor.setPosition(200000);
    m_view->setTextCursor(cursor);
    const QString behind = m_view->toPlainText().mid(200000, 20);
    m_view->AddText(Ruler(30000));
    m_view->ShowGathered();
    QVERIFY(m_view->textCursor().position() < 200000);
    QCOMPARE(m_view->toPlainText().mid(m_view->textCursor().position(), 20), behind);
}

void ReceiveViewTest::selectionStays()
{
    m_view->AddText("received");
    m_view->selectAll();
    m_view->AddText(" more");
    QCOMPARE(m_view->textCursor().selectedText(), QString("received"));

    // Backwards, from the end.
    QTextCursor cursor = m_view->textCursor();
    cursor.movePosition(QTextCursor::End);
    cursor.movePosition(QTextCursor::Left, QTextCursor::KeepAnchor, 4);
    m_view->setTextCursor(cursor);
    m_view->AddText(" and more");
    QCOMPARE(m_view->textCursor().selectedText(), QString("more"));
    QVERIFY(m_view->textCursor().position() < m_view->textCursor().anchor());
}

void ReceiveViewTest::viewScrollsAlong()
{
    QScrollBar* bar = m_view->verticalScrollBar();
    for (int i = 0; i < 300; ++i) {
        m_view->AddText(QString("line %1\n").arg(i));
        QCOMPARE(bar->value(), bar->maximum());
    }
    QVERIFY(bar->maximum() > 0);
    m_view->AddText(Ruler(100000));
    QTRY_COMPARE(m_view->document()->lastBlock().length(), 100001);
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
    m_view->AddText("last\n");
    QCOMPARE(bar->value(), bar->maximum());
}

void ReceiveViewTest::viewScrolledBackStaysWhenTheOldestGoes()
{
    QScrollBar* bar = m_view->verticalScrollBar();
    QString text;
    for (int i = 0; i < 17500; ++i) {
        text += QString("line %1\n").arg(i);
    }
    m_view->AddText(text);
    m_view->ShowGathered();
    bar->setValue(bar->maximum() * 9 / 10);
    const auto topLine = [this] { return m_view->cursorForPosition(QPoint(5, 5)).block().text(); };
    const QString before = topLine();
    const int size = m_view->document()->characterCount();
    m_view->AddText(QString("more\n").repeated(20000));
    m_view->ShowGathered();
    QVERIFY(m_view->document()->characterCount() < size + 100000);
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
    m_view->AddText("last\n");
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
    m_view->AddText(" more");
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
