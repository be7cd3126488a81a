#include "instruments/ReceiveView.h"
#include "pages/CanTester.h"
#include "tests/CanBus.h"

#include <QPushButton>
#include <QTest>

#include <memory>

/// Built with the thread sanitizer: the page and its thread share a socket and a flag, and what
/// goes wrong between them shows seldom.
class CanThreadsTest : public QObject
{
    Q_OBJECT

private slots:
    void threadHasEndedWhenItsSocketIsClosed_data();
    void threadHasEndedWhenItsSocketIsClosed();
};

void CanThreadsTest::threadHasEndedWhenItsSocketIsClosed_data()
{
    QTest::addColumn<bool>("byButton");
    QTest::newRow("by the button") << true;
    QTest::newRow("by leaving the page") << false;
}

void CanThreadsTest::threadHasEndedWhenItsSocketIsClosed()
{
    QFETCH(bool, byButton);
    CanBus bus;
    for (int i = 0; i < 5; ++i) {
        auto page = std::make_unique<CanTester>(nullptr);
        auto* openClose = page->findChild<QPushButton*>("btnOpenCom");
        openClose->click();
        bus.Send("001#");
        auto* view = page->findChild<ReceiveView*>();
        QTRY_VERIFY(!view->toPlainText().isEmpty());
        page->findChild<QPushButton*>("btnSendCom")->click();
        if (byButton) {
            openClose->click();
        }
        page.reset();
    }
}

QTEST_MAIN(CanThreadsTest)
#include "CanThreadsTest.moc"
