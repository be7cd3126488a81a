#include "frame/Look.h"
#include "frame/MoskTester.h"
#include "frame/Pages.h"
#include "instruments/MessageBoxes.h"
#include "instruments/ResultField.h"
#include "tests/Operate.h"

#include <QComboBox>
#include <QDialog>
#include <QPointer>
#include <QPushButton>

#include <functional>
#include <memory>

#include <qpa/qwindowsysteminterface.h>

namespace
{

using Driver = QWindowSystemInterface;

/// Puts input into the queue as the driver of the touch screen does. The program has not seen it
/// yet.
void QueueTap(const QPoint& place, Qt::MouseButton button = Qt::LeftButton)
{
    for (const bool pressed : {true, false}) {
        Driver::handleMouseEvent<Driver::AsynchronousDelivery>(
            nullptr, place, place, pressed ? button : Qt::NoButton, button,
            pressed ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease);
    }
}

QPoint CentreOf(const QWidget* widget)
{
    return widget->mapToGlobal(widget->rect().center());
}

} // namespace

class InputGateTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void tapFromBeforeAWindowIsShownIsDropped_data();
    void tapFromBeforeAWindowIsShownIsDropped();
    void screenListsNoWindowThatIsGone_data();
    void screenListsNoWindowThatIsGone();
    void keyDoesNotOpenAListThatIsClosing();
    void tapWaitsUntilAListIsClosed();
    void tapThatWaitsDoesNotDisturbACheck();
    void tapOnAShownBoxCounts();
    void everyTapOnAPageCounts();

    void noFieldHasAContextMenu_data();
    void noFieldHasAContextMenu();

private:
    std::unique_ptr<MoskTester> m_window;
    QPushButton* m_button = nullptr;
    int m_taps = 0;
};

void InputGateTest::initTestCase()
{
    ApplyLook();
    Speak("english");
}

void InputGateTest::init()
{
    m_window = std::make_unique<MoskTester>();
    m_button = new QPushButton(m_window.get());
    m_button->setGeometry(800, 500, 100, 40);
    m_taps = 0;
    connect(m_button, &QPushButton::clicked, this, [this] { ++m_taps; });
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void InputGateTest::cleanup()
{
    m_window.reset();
}

void InputGateTest::tapFromBeforeAWindowIsShownIsDropped_data()
{
    QTest::addColumn<bool>("isList");

    QTest::newRow("list") << true;
    QTest::newRow("dialog") << false;
}

void InputGateTest::tapFromBeforeAWindowIsShownIsDropped()
{
    QFETCH(bool, isList);
    QDialog dialog(m_window.get());
    dialog.resize(100, 100);
    auto* list = m_window->findChild<QComboBox*>();

    QueueTap(CentreOf(m_button));
    if (isList) {
        list->showPopup();
    } else {
        dialog.show();
    }

    QCoreApplication::processEvents();
    QCOMPARE(m_taps, 0);
    const QWidget* shown = isList ? QApplication::activePopupWidget() : &dialog;
    QVERIFY(shown != nullptr && shown->isVisible());
    QCOMPARE(QGuiApplication::topLevelAt(CentreOf(shown)), shown->windowHandle());
    list->hidePopup();
}

void InputGateTest::screenListsNoWindowThatIsGone_data()
{
    QTest::addColumn<bool>("isDeleted");

    QTest::newRow("hidden by a tap, then deleted") << false;
    QTest::newRow("deleted by a tap") << true;
}

void InputGateTest::screenListsNoWindowThatIsGone()
{
    QFETCH(bool, isDeleted);
    QPointer<QWidget> popup = new QWidget(m_window.get(), Qt::Popup);
    popup->setGeometry(100, 100, 300, 300);
    connect(m_button, &QPushButton::clicked, this, [popup, isDeleted] {
        if (isDeleted) {
            delete popup;
        } else {
            popup->hide();
        }
    });

    QueueTap(CentreOf(m_button));
    popup->show();

    delete popup;
    for (int x = 0; x < m_window->width(); x += 50) {
        for (int y = 0; y < m_window->height(); y += 50) {
            QCOMPARE(QGuiApplication::topLevelAt({x, y}), m_window->windowHandle());
        }
    }
}

void InputGateTest::keyDoesNotOpenAListThatIsClosing()
{
    auto* list = m_window->findChild<QComboBox*>();
    list->setFocus();
    list->showPopup();
    QCoreApplication::processEvents();

    Driver::handleKeyEvent<Driver::AsynchronousDelivery>(m_window->windowHandle(), QEvent::KeyPress,
                                                         Qt::Key_F4, Qt::NoModifier);
    list->hidePopup();

    QVERIFY(QApplication::activePopupWidget() == nullptr);
    m_window->GetBody()->OpenPage(BodyWidget::BasicPage);
    for (int x = 0; x < m_window->width(); x += 50) {
        for (int y = 0; y < m_window->height(); y += 50) {
            QCOMPARE(QGuiApplication::topLevelAt({x, y}), m_window->windowHandle());
        }
    }
}

void InputGateTest::tapWaitsUntilAListIsClosed()
{
    auto* list = m_window->findChild<QComboBox*>();
    list->showPopup();
    QCoreApplication::processEvents();

    QueueTap(CentreOf(m_button));
    // The platform delivers the tap while it hides the list.
    list->hidePopup();

    QCOMPARE(m_taps, 0);
    QTRY_COMPARE(m_taps, 1);
}

void InputGateTest::tapThatWaitsDoesNotDisturbACheck()
{
    QPushButton check(m_window.get());
    check.setGeometry(600, 500, 100, 40);
    check.show();
    int tapsDuringTheCheck = -1;
    connect(&check, &QPushButton::clicked, this, [this, &tapsDuringTheCheck] {
        PaintPage();
        tapsDuringTheCheck = m_taps;
    });
    auto* list = m_window->findChild<QComboBox*>();
    list->showPopup();
    QCoreApplication::processEvents();

    QueueTap(CentreOf(&check));
    QueueTap(CentreOf(m_button));
    list->hidePopup();

    QTRY_COMPARE(m_taps, 1);
    QCOMPARE(tapsDuringTheCheck, 0);
}

void InputGateTest::tapOnAShownBoxCounts()
{
    QTimer::singleShot(0, this, [] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        QVERIFY(box != nullptr);
        QTimer::singleShot(5000, box, &QMessageBox::reject);
        QueueTap(CentreOf(box->button(QMessageBox::Yes)));
    });

    QVERIFY(AskOperator(m_window.get(), "?"));
}

void InputGateTest::everyTapOnAPageCounts()
{
    for (int i = 0; i < 3; ++i) {
        QueueTap(CentreOf(m_button));
    }

    QTRY_COMPARE(m_taps, 3);
}

void InputGateTest::noFieldHasAContextMenu_data()
{
    QTest::addColumn<int>("page");

    for (const Page& page : allPages) {
        QTest::newRow(page.name) << int(page.id);
    }
}

void InputGateTest::noFieldHasAContextMenu()
{
    QFETCH(int, page);
    m_window->GetBody()->OpenPage(page);
    QCoreApplication::processEvents();
    QWidgetList fields;
    const auto children = m_window->GetBody()->findChildren<QWidget*>();
    for (QWidget* child : children) {
        if (child->isVisible() && (child->inherits("QLineEdit") || child->inherits("QTextEdit") ||
                                   child->inherits("QScrollBar"))) {
            fields += child;
        }
    }
    for (QWidget* field : qAsConst(fields)) {
        const QPoint place = CentreOf(field);
        QueueTap(place, Qt::RightButton);
        QCoreApplication::processEvents();
        QVERIFY(QApplication::activePopupWidget() == nullptr);

        // What a platform makes of the menu key and of Shift+F10.
        field->setFocus();
        QWindow* window = m_window->windowHandle();
        Driver::handleContextMenuEvent(window, false, window->mapFromGlobal(place), place, {});
        QCoreApplication::processEvents();
        QVERIFY(QApplication::activePopupWidget() == nullptr);
    }
}

QTEST_MAIN(InputGateTest)
#include "InputGateTest.moc"
