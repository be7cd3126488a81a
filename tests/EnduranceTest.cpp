#include "frame/BodyWidget.h"
#include "frame/Look.h"
#include "frame/MoskTester.h"
#include "frame/Pages.h"
#include "simulated-board/Board.h"
#include "tests/OpenDescriptors.h"
#include "tests/Operate.h"

#include <QComboBox>
#include <QDir>
#include <QPushButton>

#include <memory>

#include <malloc.h>

// Present where the address sanitizer is, whose allocator knows nothing of mallinfo2().
extern "C" __attribute__((weak)) size_t
__sanitizer_get_current_allocated_bytes(); // NOLINT(bugprone-reserved-identifier)

namespace
{

/// The counts that a leak would raise.
struct Footprint {
    int descriptors = 0;
    int threads = 0;
    qint64 memory = 0;
};

int Threads()
{
    return QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

Footprint Measure()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const size_t memory = __sanitizer_get_current_allocated_bytes != nullptr
                              ? __sanitizer_get_current_allocated_bytes()
                              : mallinfo2().uordblks;
    return {OpenDescriptors(), Threads(), static_cast<qint64>(memory)};
}

/// The commands started by this process that still run, or whose end nobody has asked for.
int Children()
{
    int count = 0;
    const QDir processes("/run/proc");
    const QStringList numbers = processes.entryList({"[1-9]*"}, QDir::Dirs);
    for (const QString& number : numbers) {
        QFile file(processes.filePath(number + "/stat"));
        // NUMBER (NAME) STATE PARENT; the process may have ended meanwhile.
        if (file.open(QIODevice::ReadOnly)) {
            const QByteArray state = file.readAll();
            const QByteArray parent = state.mid(state.lastIndexOf(')') + 2).split(' ').value(1);
            count += parent.toInt() == QCoreApplication::applicationPid() ? 1 : 0;
        }
    }
    return count;
}

} // namespace

class EnduranceTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void languageSwitchesLeaveNothingBehind();
    void pageChangesLeaveNothingBehind();
    void checksLeaveNothingBehind_data();
    void checksLeaveNothingBehind();

private:
    void PressEverything(const Page& page);
    void SwitchLanguage(int index);

    std::unique_ptr<MoskTester> m_window;
};

void EnduranceTest::init()
{
    ApplyLook();
    Speak("english");
    m_window = std::make_unique<MoskTester>();
    g_mainwnd = m_window.get();
    m_window->show();
}

void EnduranceTest::cleanup()
{
    m_window.reset();
    g_mainwnd = nullptr;
    Board::RemoveTools();
}

void EnduranceTest::SwitchLanguage(int index)
{
    QPointer<QWidget> page = m_window->GetBody()->layout()->itemAt(0)->widget();
    InGrid<QComboBox>(page, 0, 1)->setCurrentIndex(index);
    QTRY_VERIFY(page == nullptr);
}

void EnduranceTest::languageSwitchesLeaveNothingBehind()
{
    Footprint early;
    for (int i = 0; i < 200; ++i) {
        SwitchLanguage(i % 2);
        if (i == 39) {
            early = Measure();
        }
    }
    const Footprint late = Measure();

    QCOMPARE(late.descriptors, early.descriptors);
    QCOMPARE(late.threads, early.threads);
    QVERIFY2(late.memory - early.memory < qint64(128) * 1024,
             qPrintable(QString::number(late.memory - early.memory)));
}

void EnduranceTest::pageChangesLeaveNothingBehind()
{
    Footprint early;
    for (int i = 0; i < 2000; ++i) {
        m_window->GetBody()->OpenPage(allPages[i % allPages.size()].id);
        QCoreApplication::processEvents();
        QCOMPARE(m_window->GetBody()->layout()->count(), 1);
        if (i == 399) {
            early = Measure();
        }
    }
    m_window->GetBody()->OpenPage(allPages[399 % allPages.size()].id);
    QCoreApplication::processEvents();
    const Footprint late = Measure();

    QCOMPARE(late.descriptors, early.descriptors);
    QCOMPARE(late.threads, early.threads);
    // What a page holds is tens of thousands of bytes. Qt's style sheet keeps some hundred for each
    // address at which the list of a combo box ever was; the sanitizer hardly uses one twice.
    QVERIFY2(late.memory - early.memory < qint64(512) * 1600,
             qPrintable(QString::number(late.memory - early.memory)));
}

/// Opens a page and presses each of its buttons twice. Boxes are closed as soon as they open.
void EnduranceTest::PressEverything(const Page& page)
{
    QTimer closeBoxes;
    connect(&closeBoxes, &QTimer::timeout, this, [] {
        if (QWidget* box = QApplication::activeModalWidget()) {
            box->close();
        }
    });
    closeBoxes.start(5);
    m_window->GetBody()->OpenPage(page.id);
    const auto buttons = m_window->GetBody()->findChildren<QPushButton*>();
    for (QPushButton* button : buttons) {
        for (int i = 0; i < 2 && button->isEnabled(); ++i) {
            QTest::mouseClick(button, Qt::LeftButton);
        }
    }
    m_window->GetBody()->OpenPage(BodyWidget::NoPage);
    QCoreApplication::processEvents();
}

void EnduranceTest::checksLeaveNothingBehind_data()
{
    QTest::addColumn<QByteArray>("tools");

    QTest::newRow("tools work") << QByteArray();
    QTest::newRow("tools are silent") << QByteArray("exec sleep 0.05");
    QTest::newRow("tools print and die") << QByteArray("echo RUNNING; kill -SEGV $$");
    QTest::newRow("tools are missing") << QByteArray("missing");
}

void EnduranceTest::checksLeaveNothingBehind()
{
    QFETCH(QByteArray, tools);
    Board::Become(Board::ReadFile(qgetenv("BOARD_HOME") + "/../boards/default.board"));
    const QByteArray path = qgetenv("PATH");
    if (tools == "missing") {
        qputenv("PATH", "/nowhere");
    } else if (!tools.isEmpty()) {
        for (const char* tool : {"ping", "ifconfig", "wpa_cli", "udhcpc", "find", "date", "cat",
                                 "grep", "wc", "awk", "tinyplay", "killall"}) {
            Board::PutTool(tool, tools);
        }
    }
    for (const Page& page : allPages) {
        const int children = Children();
        // What is loaded late stays loaded.
        PressEverything(page);
        const Footprint before = Measure();

        PressEverything(page);

        QTRY_VERIFY2(Children() == children, page.name);
        QTRY_VERIFY2(Measure().descriptors == before.descriptors, page.name);
        QTRY_VERIFY2(Measure().threads <= before.threads, page.name);
    }
    qputenv("PATH", path);
}

QTEST_MAIN(EnduranceTest)
#include "EnduranceTest.moc"
