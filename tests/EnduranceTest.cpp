#include "frame/BodyWidget.h"
#include "frame/Look.h"
#include "frame/MoskTester.h"
#include "tests/OpenDescriptors.h"
#include "tests/Operate.h"

#include <QComboBox>
#include <QDir>

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

} // namespace

class EnduranceTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void languageSwitchesLeaveNothingBehind();
    void pageChangesLeaveNothingBehind();

private:
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
        m_window->GetBody()->OpenPage(1 + i % 10);
        QCoreApplication::processEvents();
        if (i == 399) {
            early = Measure();
        }
    }
    m_window->GetBody()->OpenPage(1 + 399 % 10);
    QCoreApplication::processEvents();
    const Footprint late = Measure();

    QCOMPARE(late.descriptors, early.descriptors);
    QCOMPARE(late.threads, early.threads);
    // What a page holds is tens of thousands of bytes. Qt's style sheet keeps some hundred for each
    // address at which the list of a combo box ever was; the sanitizer hardly uses one twice.
    QVERIFY2(late.memory - early.memory < qint64(512) * 1600,
             qPrintable(QString::number(late.memory - early.memory)));
}

QTEST_MAIN(EnduranceTest)
#include "EnduranceTest.moc"
