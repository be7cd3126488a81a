#include "frame/BodyWidget.h"
#include "frame/Look.h"
#include "frame/MoskTester.h"
#include "instruments/ReceiveView.h"
#include "pages/BasicTester.h"
#include "simulated-board/Board.h"
#include "tests/Operate.h"
#include "tests/Warnings.h"

#include <QComboBox>
#include <QLibraryInfo>
#include <QPushButton>
#include <QQuickItem>
#include <QQuickWidget>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTextEdit>
#include <QTouchDevice>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>

#include <qpa/qwindowsysteminterface.h>
#include <sys/mount.h>

namespace
{

const QByteArray layoutsModule =
    QLibraryInfo::location(QLibraryInfo::Qml2ImportsPath).toLocal8Bit() + "/QtQuick/Layouts";

/// What was warned of so far in a test, but for the dictionaries, which the keyboard does without.
QStringList Warned()
{
    QStringList texts;
    const QStringList all = Warnings::Texts();
    std::copy_if(all.begin(), all.end(), std::back_inserter(texts), [](const QString& text) {
        return !text.startsWith("Hunspell dictionary is missing");
    });
    return texts;
}

} // namespace

class KeyboardPanelTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void missingModuleIsSaidOnceAndTheRestWorks();

    void keyboardIsLoadedWhenAFieldIsFirstTapped();
    void keysAreThoseOfOneLanguage();
    void keysTypeWhatIsOnThem();
    void fieldsOfEveryPageStayInSight_data();
    void fieldsOfEveryPageStayInSight();
    void lineTypedIntoStaysInSight_data();
    void lineTypedIntoStaysInSight();
    void fieldStaysInSightWhenTheWindowChangesItsSize();
    void pageKeepsItsLayout();

    void hideKeyGivesTheRoomBackAndATapTakesItAgain();
    void buttonPressedBesideTheKeyboardIsClicked_data();
    void buttonPressedBesideTheKeyboardIsClicked();
    void listOpenedBesideTheKeyboardStaysAtItsPlace();
    void nothingMovesUnderTheFingerOnAField();
    void otherFieldTakesTheKeyboardOver();

    void whatTakesNoTextOpensNoKeyboard_data();
    void whatTakesNoTextOpensNoKeyboard();
    void scrollingOpensNoKeyboard();
    void focusWithoutATapOpensNoKeyboard();
    void boxIsNotCovered();

    void pageChangeHidesTheKeyboard();
    void languageChangeHidesTheKeyboard();
    void fieldDisabledWhileTypedIntoHidesTheKeyboard();

    void fieldOpensTheKeysThatItNeeds_data();
    void fieldOpensTheKeysThatItNeeds();
    void keysFollowTheFieldThatIsTapped();
    void fieldOfNumbersTakesLetters();

private:
    void Tap(const QWidget* widget, const QPoint& position);
    void Tap(const QWidget* widget) { Tap(widget, widget->rect().center()); }
    using IsKey = std::function<bool(const QQuickItem& item)>;
    QQuickItem* ShownKey(const IsKey& isKey);
    void TapKey(const IsKey& isKey);
    void TapKey(const QString& label);
    void TapKey(Qt::Key code);
    void TapHideKey();
    QQuickItem* KeyOf(const QString& label);
    QQuickWidget* Keyboard() { return m_window->findChild<QQuickWidget*>("keyboardPanel"); }
    bool IsKeyboardShown() { return Keyboard() != nullptr && Keyboard()->isVisible(); }
    bool IsContentAtRest();
    void TakeScreenOf(const QSize& size);
    QRect InWindow(const QWidget* widget) const;
    BasicTester* OpenBasicPage();
    BasicTester* TypeInRow(int row);
    QTextEdit* OpenTextPage();

    /// One window for all tests, as in the program: Qt keeps the keyboard's graphics until the
    /// process ends.
    MoskTester* m_window = nullptr;
    std::unique_ptr<Warnings> m_warnings;
};

void KeyboardPanelTest::initTestCase()
{
    ApplyLook();
    Board::Become("language english\n");
    // The pictures that are compared do not blink.
    QApplication::setCursorFlashTime(0);
    Speak("english");
    g_mainwnd = new MoskTester;
    m_window = g_mainwnd;
}

void KeyboardPanelTest::init()
{
    TakeScreenOf({1024, 600});
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window));
    m_warnings = std::make_unique<Warnings>();
}

void KeyboardPanelTest::cleanup()
{
    m_warnings.reset();
    m_window->GetBody()->OpenPage(BodyWidget::NoPage);
    delete m_window->GetBody()->findChild<QTextEdit*>();
    QTRY_VERIFY(!IsKeyboardShown());
}

void KeyboardPanelTest::cleanupTestCase()
{
    delete m_window;
    g_mainwnd = nullptr;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// Taps as the screen's driver does. The widget that lies on top there takes it.
void KeyboardPanelTest::Tap(const QWidget* widget, const QPoint& position)
{
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {},
                      widget->mapTo(m_window, position));
}

QQuickItem* KeyboardPanelTest::ShownKey(const IsKey& isKey)
{
    QList<QQuickItem*> items = {Keyboard()->rootObject()};
    while (!items.isEmpty()) {
        QQuickItem* item = items.takeFirst();
        if (item->isVisible() && item->isEnabled() && isKey(*item)) {
            return item;
        }
        items += item->childItems();
    }
    return nullptr;
}

void KeyboardPanelTest::TapKey(const IsKey& isKey)
{
    // A layout's keys come some time after the keyboard.
    QTRY_VERIFY(ShownKey(isKey) != nullptr);
    const QQuickItem* key = ShownKey(isKey);
    Tap(Keyboard(), key->mapToScene(key->boundingRect().center()).toPoint());
    QCoreApplication::processEvents();
}

QQuickItem* KeyboardPanelTest::KeyOf(const QString& label)
{
    return ShownKey(
        [label](const QQuickItem& key) { return key.property("displayText") == label; });
}

void KeyboardPanelTest::TapKey(const QString& label)
{
    TapKey([label](const QQuickItem& key) { return key.property("displayText") == label; });
}

void KeyboardPanelTest::TapKey(Qt::Key code)
{
    TapKey([code](const QQuickItem& key) { return key.property("key") == int(code); });
}

void KeyboardPanelTest::TapHideKey()
{
    TapKey([](const QQuickItem& key) {
        return QByteArray(key.metaObject()->className()).startsWith("HideKeyboardKey");
    });
}

bool KeyboardPanelTest::IsContentAtRest()
{
    return m_window->centralWidget()->geometry() == m_window->rect();
}

void KeyboardPanelTest::TakeScreenOf(const QSize& size)
{
    const QRect screen(QPoint(0, 0), size);
    QWindowSystemInterface::handleScreenGeometryChange(QGuiApplication::primaryScreen(), screen,
                                                       screen);
    QWindowSystemInterface::sendWindowSystemEvents(QEventLoop::AllEvents);
    m_window->resize(size);
}

QRect KeyboardPanelTest::InWindow(const QWidget* widget) const
{
    return {widget->mapTo(m_window, QPoint(0, 0)), widget->size()};
}

BasicTester* KeyboardPanelTest::OpenBasicPage()
{
    m_window->GetBody()->OpenPage(BodyWidget::BasicPage);
    QCoreApplication::processEvents();
    return m_window->findChild<BasicTester*>();
}

/// Opens the Basic page and taps the field of a row, which opens the keyboard.
BasicTester* KeyboardPanelTest::TypeInRow(int row)
{
    BasicTester* page = OpenBasicPage();
    Tap(InGrid<QLineEdit>(page, row, 1));
    if (!QTest::qWaitFor([this] { return IsKeyboardShown(); })) {
        QTest::qFail("no keyboard", __FILE__, __LINE__);
    }
    return page;
}

// Opens a page with a view over the whole body, like those of the receive pages.
QTextEdit* KeyboardPanelTest::OpenTextPage()
{
    m_window->GetBody()->OpenPage(BodyWidget::NoPage);
    auto* text = new QTextEdit(m_window->GetBody());
    m_window->GetBody()->layout()->addWidget(text);
    for (int i = 0; i < 60; ++i) {
        text->append(QString("line %1").arg(i));
    }
    QCoreApplication::processEvents();
    return text;
}

// This test must be the first: a loaded module stays until the process ends.
void KeyboardPanelTest::missingModuleIsSaidOnceAndTheRestWorks()
{
    MoskTester window;
    QScopedValueRollback<MoskTester*> rollback(m_window, &window);
    m_window->resize(1024, 600);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window));
    QVERIFY(mount("none", layoutsModule, "tmpfs", 0, nullptr) == 0);
    BasicTester* page = OpenBasicPage();
    auto* line = InGrid<QLineEdit>(page, 8, 1);

    Tap(line);
    QTRY_VERIFY(!Warned().isEmpty());
    Tap(InGrid<QLineEdit>(page, 5, 1));
    QTest::qWait(50);
    umount(layoutsModule);

    QVERIFY2(Warned().size() == 1, qPrintable(Warned().join("\n")));
    QVERIFY2(Warned()[0].contains("module \"QtQuick.Layouts\" is not installed"),
             qPrintable(Warned()[0]));
    QVERIFY(!IsKeyboardShown());
    QVERIFY(IsContentAtRest());
    QTest::keyClicks(line, "x");
    QVERIFY(line->text().endsWith('x'));
    Press(page, "btnUsbTest");
    QCOMPARE(InGrid<QLineEdit>(page, 0, 1)->text(),
             QString("Detected that there is(are) 0 USB flash drive inserted!"));
}

void KeyboardPanelTest::keyboardIsLoadedWhenAFieldIsFirstTapped()
{
    auto* line = InGrid<QLineEdit>(OpenBasicPage(), 5, 1);
    QVERIFY(Keyboard() == nullptr);

    Tap(line);

    QTRY_VERIFY(IsKeyboardShown());
    QCOMPARE(Keyboard()->geometry().bottom(), m_window->rect().bottom());
    QCOMPARE(Keyboard()->width(), m_window->width());
    TapKey("7");
    QCOMPARE(line->text(), QString("192.168.10.17"));
    QVERIFY2(Warned().isEmpty(), qPrintable(Warned().join("\n")));
}

void KeyboardPanelTest::keysAreThoseOfOneLanguage()
{
    TypeInRow(5);
    QTRY_VERIFY(KeyOf("q") != nullptr || KeyOf("1") != nullptr);

    QVERIFY2(ShownKey([](const QQuickItem& key) {
                 return QByteArray(key.metaObject()->className()).startsWith("ChangeLanguageKey");
             }) == nullptr,
             "a key to change the language");
}

void KeyboardPanelTest::keysTypeWhatIsOnThem()
{
    auto* line = InGrid<QLineEdit>(TypeInRow(8), 8, 1);
    line->clear();

    for (const char* label : {"a", "b", "c", ".", "d", ",", "&123", "1", "0", ".", "2", ":", "-"}) {
        TapKey(label);
    }
    TapKey("ABC");
    TapKey(Qt::Key_Shift);
    TapKey("f");
    TapKey("g");
    TapKey(Qt::Key_Space);
    TapKey("h");
    TapKey(Qt::Key_Backspace);
    TapKey("i");

    QCOMPARE(line->text(), QString("abc.d,10.2:-Fg i"));
    QVERIFY2(Warned().isEmpty(), qPrintable(Warned().join('\n')));
}

void KeyboardPanelTest::fieldsOfEveryPageStayInSight_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("fields");

    for (const QSize& size : {QSize(1024, 600), QSize(800, 480)}) {
        for (const auto& [page, fields] : {std::pair<int, int>(BodyWidget::BasicPage, 8),
                                           {BodyWidget::SerialPage, 2},
                                           {BodyWidget::DatabasePage, 3},
                                           {BodyWidget::WifiPage, 4},
                                           {BodyWidget::CanPage, 2},
                                           {BodyWidget::RemoteAccessPage, 4}}) {
            QTest::addRow("%dx%d page %d", size.width(), size.height(), page)
                << size << page << fields;
        }
    }
}

void KeyboardPanelTest::fieldsOfEveryPageStayInSight()
{
    QFETCH(QSize, size);
    QFETCH(int, page);
    QFETCH(int, fields);
    TakeScreenOf(size);
    m_window->GetBody()->OpenPage(page);
    QCoreApplication::processEvents();

    int tapped = 0;
    for (auto* line : m_window->GetBody()->findChildren<QLineEdit*>()) {
        if (!line->isVisible() || !line->isEnabled()) {
            continue;
        }
        Tap(line);
        QTRY_VERIFY(IsKeyboardShown());
        QTRY_VERIFY(!Keyboard()->geometry().intersects(InWindow(line)));
        QVERIFY(m_window->rect().contains(InWindow(line)));
        QVERIFY(QRect(QPoint(0, 0), size).contains(Keyboard()->geometry()));
        line->setText(QString("field %1").arg(tapped));
        QCoreApplication::processEvents();
        const QImage::Format format = QImage::Format_RGB32;
        QCOMPARE(m_window->grab(InWindow(line)).toImage().convertToFormat(format),
                 line->grab().toImage().convertToFormat(format));
        QCOMPARE(m_window->size(), size);
        // Nothing but the content's background shows below it.
        QVERIFY(InWindow(m_window->centralWidget()).bottom() >= Keyboard()->geometry().top() - 1);
        ++tapped;
        TapHideKey();
        QTRY_VERIFY(IsContentAtRest());
    }
    // Of a view higher than the room it is the line typed into, also of a full view that shows its
    // end.
    for (auto* text : m_window->GetBody()->findChildren<ReceiveView*>()) {
        text->AddText(QString("a line of text\n").repeated(300));
        text->ShowGathered();
        Tap(text->viewport(), QPoint(20, text->viewport()->height() - 40));
        QTRY_VERIFY(IsKeyboardShown());
        const auto line = [this, text] {
            return text->cursorRect().translated(text->viewport()->mapTo(m_window, QPoint(0, 0)));
        };
        QTRY_VERIFY(!Keyboard()->geometry().intersects(line()));
        QVERIFY(m_window->rect().contains(line()));
        ++tapped;
        TapHideKey();
        QTRY_VERIFY(IsContentAtRest());
    }
    QCOMPARE(tapped, fields);
}

void KeyboardPanelTest::lineTypedIntoStaysInSight_data()
{
    QTest::addColumn<QSize>("size");

    QTest::newRow("1024x600") << QSize(1024, 600);
    QTest::newRow("800x480") << QSize(800, 480);
}

void KeyboardPanelTest::lineTypedIntoStaysInSight()
{
    QFETCH(QSize, size);
    TakeScreenOf(size);
    QTextEdit* text = OpenTextPage();
    const auto isLineInSight = [this, text] {
        const QRect line =
            text->cursorRect().translated(text->viewport()->mapTo(m_window, QPoint(0, 0)));
        return line.top() >= 0 && line.bottom() < Keyboard()->geometry().top();
    };

    text->moveCursor(QTextCursor::Start);
    Tap(text->viewport(), QPoint(20, text->viewport()->height() - 10));
    QTRY_VERIFY(IsKeyboardShown());
    QTRY_VERIFY(isLineInSight());
    QVERIFY(!IsContentAtRest());

    text->moveCursor(QTextCursor::Start);
    QTRY_VERIFY(isLineInSight());
    for (int i = 0; i < 30; ++i) {
        TapKey(Qt::Key_Return);
        QTRY_VERIFY(isLineInSight());
    }
    QCOMPARE(text->textCursor().blockNumber(), 30);
}

void KeyboardPanelTest::fieldStaysInSightWhenTheWindowChangesItsSize()
{
    const auto* line = InGrid<QLineEdit>(TypeInRow(8), 8, 1);

    TakeScreenOf({800, 480});

    QTRY_COMPARE(Keyboard()->geometry().bottomRight(), QPoint(799, 479));
    QTRY_VERIFY(m_window->rect().contains(InWindow(line)) &&
                !Keyboard()->geometry().intersects(InWindow(line)));
}

void KeyboardPanelTest::pageKeepsItsLayout()
{
    BasicTester* page = OpenBasicPage();
    const QRect pagePlace = page->geometry();
    const QRect linePlace = InGrid<QLineEdit>(page, 8, 1)->geometry();
    const QRect bodyPlace = m_window->GetBody()->geometry();

    Tap(InGrid<QLineEdit>(page, 8, 1));
    QTRY_VERIFY(IsKeyboardShown());
    const int moved = m_window->centralWidget()->y();
    QVERIFY(moved < 0);
    // What a label that grows does to the window's layout.
    m_window->centralWidget()->updateGeometry();
    QCoreApplication::processEvents();

    QCOMPARE(m_window->centralWidget()->y(), moved);
    QCOMPARE(page->geometry(), pagePlace);
    QCOMPARE(InGrid<QLineEdit>(page, 8, 1)->geometry(), linePlace);
    QCOMPARE(m_window->GetBody()->geometry(), bodyPlace);
    QCOMPARE(m_window->size(), QSize(1024, 600));
}

void KeyboardPanelTest::hideKeyGivesTheRoomBackAndATapTakesItAgain()
{
    const auto* line = InGrid<QLineEdit>(TypeInRow(8), 8, 1);

    for (int i = 0; i < 3; ++i) {
        TapHideKey();
        QTRY_VERIFY(!IsKeyboardShown());
        QVERIFY(IsContentAtRest());
        QCOMPARE(QApplication::focusWidget(), line);

        Tap(line);
        QTRY_VERIFY(IsKeyboardShown());
        QVERIFY(!Keyboard()->geometry().intersects(InWindow(line)));
    }
}

void KeyboardPanelTest::buttonPressedBesideTheKeyboardIsClicked_data()
{
    QTest::addColumn<bool>("touch");

    QTest::newRow("mouse") << false;
    QTest::newRow("touch") << true;
}

void KeyboardPanelTest::buttonPressedBesideTheKeyboardIsClicked()
{
    QFETCH(bool, touch);
    static QTouchDevice* const s_screen = QTest::createTouchDevice();
    BasicTester* page = TypeInRow(7);
    auto* button = page->findChild<QPushButton*>("btnrRTCTest");
    QSignalSpy clicks(button, &QPushButton::clicked);
    QWindow* window = m_window->windowHandle();
    const QRect place = InWindow(button);
    QVERIFY(m_window->rect().contains(place));

    if (touch) {
        QTest::touchEvent(window, s_screen).press(0, place.center(), window);
    } else {
        QTest::mousePress(window, Qt::LeftButton, {}, place.center());
    }
    // A finger that stays for a while.
    QTest::qWait(100);
    QVERIFY(button->isDown());
    QCOMPARE(QApplication::focusWidget(), button);
    QCOMPARE(InWindow(button), place);
    QVERIFY(IsKeyboardShown());
    if (touch) {
        QTest::touchEvent(window, s_screen).release(0, place.center(), window);
    } else {
        QTest::mouseRelease(window, Qt::LeftButton, {}, place.center());
    }

    QCOMPARE(clicks.count(), 1);
    QTRY_VERIFY(!IsKeyboardShown());
    QVERIFY(IsContentAtRest());
}

void KeyboardPanelTest::listOpenedBesideTheKeyboardStaysAtItsPlace()
{
    BasicTester* page = OpenBasicPage();
    auto* list = InGrid<QComboBox>(page, 2, 1);
    list->setEnabled(true);
    Tap(InGrid<QLineEdit>(page, 7, 1));
    QTRY_VERIFY(IsKeyboardShown());
    const QRect place = InWindow(list);
    QVERIFY(place.top() >= 0 && !IsContentAtRest());

    Tap(list);
    QTRY_VERIFY(QApplication::activePopupWidget() != nullptr);
    QTest::qWait(50);
    QCOMPARE(InWindow(list), place);

    QApplication::activePopupWidget()->close();
    QTRY_VERIFY(!IsKeyboardShown());
    QVERIFY(IsContentAtRest());
}

void KeyboardPanelTest::nothingMovesUnderTheFingerOnAField()
{
    BasicTester* page = TypeInRow(8);
    // Higher up, so the page moves down for it once it is tapped.
    auto* line = InGrid<QLineEdit>(page, 6, 1);
    QWindow* window = m_window->windowHandle();
    const QRect place = InWindow(line);

    QTest::mousePress(window, Qt::LeftButton, {}, place.center());
    QTest::qWait(50);
    QCOMPARE(QApplication::focusWidget(), line);
    QCOMPARE(InWindow(line), place);
    QTest::mouseRelease(window, Qt::LeftButton, {}, place.center());

    QTRY_VERIFY(InWindow(line).top() > place.top());
    QVERIFY(IsKeyboardShown());
    QVERIFY(!line->hasSelectedText());
}

void KeyboardPanelTest::otherFieldTakesTheKeyboardOver()
{
    BasicTester* page = TypeInRow(8);
    auto* other = InGrid<QLineEdit>(page, 5, 1);

    Tap(other);
    QTRY_COMPARE(QApplication::focusWidget(), other);
    QTest::qWait(50);

    QVERIFY(IsKeyboardShown());
    QVERIFY(m_window->rect().contains(InWindow(other)));
    other->clear();
    TapKey("7");
    QCOMPARE(other->text(), QString("7"));
}

void KeyboardPanelTest::whatTakesNoTextOpensNoKeyboard_data()
{
    QTest::addColumn<QString>("what");

    QTest::newRow("view that is only read") << "view";
    QTest::newRow("line that is only read") << "line";
    QTest::newRow("list") << "list";
    QTest::newRow("button") << "button";
}

void KeyboardPanelTest::whatTakesNoTextOpensNoKeyboard()
{
    QFETCH(QString, what);
    const QWidget* tapped = nullptr;
    if (what == "view") {
        QTextEdit* view = OpenTextPage();
        view->setReadOnly(true);
        tapped = view->viewport();
    } else if (what == "line") {
        auto* line = InGrid<QLineEdit>(OpenBasicPage(), 0, 1);
        line->setReadOnly(true);
        tapped = line;
    } else if (what == "list") {
        auto* list = InGrid<QComboBox>(OpenBasicPage(), 2, 1);
        list->setEnabled(true);
        tapped = list;
    } else {
        tapped = OpenBasicPage()->findChild<QPushButton*>("btnUsbTest");
    }

    Tap(tapped);
    QTest::qWait(50);

    QVERIFY(!IsKeyboardShown());
    QVERIFY(IsContentAtRest());
    if (QWidget* popup = QApplication::activePopupWidget()) {
        popup->close();
    }
}

void KeyboardPanelTest::scrollingOpensNoKeyboard()
{
    QTextEdit* text = OpenTextPage();

    Tap(text->verticalScrollBar());
    QTest::qWait(50);

    QVERIFY(!IsKeyboardShown());
}

// If a page disables the button just pressed, the focus moves on to the next widget.
void KeyboardPanelTest::focusWithoutATapOpensNoKeyboard()
{
    BasicTester* page = TypeInRow(8);
    auto* button = page->findChild<QPushButton*>("btn4gTest");
    connect(button, &QPushButton::pressed, page, [page, button] {
        InGrid<QLineEdit>(page, 0, 1)->setFocus(Qt::TabFocusReason);
        button->setDown(false);
    });

    Tap(button);
    QTRY_COMPARE(QApplication::focusWidget(), InGrid<QLineEdit>(page, 0, 1));
    QTest::qWait(50);

    QVERIFY(!IsKeyboardShown());
    QVERIFY(IsContentAtRest());
}

void KeyboardPanelTest::boxIsNotCovered()
{
    BasicTester* page = TypeInRow(8);

    bool seen = false;
    QMessageBox box(QMessageBox::Warning, "Warning", "text", QMessageBox::Ok, page);
    QTimer::singleShot(50, &box, [this, &box, &seen] {
        seen = !IsKeyboardShown() && IsContentAtRest();
        QTest::mouseClick(box.button(QMessageBox::Ok), Qt::LeftButton);
    });
    box.exec();

    QVERIFY(seen);
}

void KeyboardPanelTest::pageChangeHidesTheKeyboard()
{
    TypeInRow(8);

    m_window->GetBody()->OpenPage(BodyWidget::HomePage);

    QTRY_VERIFY(!IsKeyboardShown());
    QVERIFY(IsContentAtRest());
}

void KeyboardPanelTest::languageChangeHidesTheKeyboard()
{
    QPointer<BasicTester> page = TypeInRow(8);

    m_window->TranslateUI();

    QTRY_VERIFY(page == nullptr);
    QTRY_VERIFY(!IsKeyboardShown());
    QVERIFY(IsContentAtRest());
    Tap(InGrid<QLineEdit>(m_window->findChild<BasicTester*>(), 8, 1));
    QTRY_VERIFY(IsKeyboardShown());
}

void KeyboardPanelTest::fieldDisabledWhileTypedIntoHidesTheKeyboard()
{
    BasicTester* page = TypeInRow(8);

    page->setEnabled(false);

    QTRY_VERIFY(!IsKeyboardShown());
    QVERIFY(IsContentAtRest());
}

void KeyboardPanelTest::fieldOpensTheKeysThatItNeeds_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<bool>("numbers");

    QTest::newRow("Ethernet address") << 5 << true;
    QTest::newRow("4G host") << 8 << false;
}

void KeyboardPanelTest::fieldOpensTheKeysThatItNeeds()
{
    QFETCH(int, row);
    QFETCH(bool, numbers);

    TypeInRow(row);

    QTRY_VERIFY(KeyOf(numbers ? "7" : "q") != nullptr);
    QTRY_VERIFY(KeyOf(numbers ? "q" : "7") == nullptr);
}

void KeyboardPanelTest::keysFollowTheFieldThatIsTapped()
{
    BasicTester* page = OpenBasicPage();
    auto* host = InGrid<QLineEdit>(page, 8, 1);
    const auto* time = InGrid<QLineEdit>(page, 7, 1);

    Tap(host);
    QTRY_VERIFY(IsKeyboardShown() && KeyOf("q") != nullptr);
    // The page has moved up for the field.
    QTRY_VERIFY(!IsContentAtRest());
    Tap(time);
    QTRY_VERIFY(KeyOf("7") != nullptr && KeyOf("q") == nullptr);
    // The field tapped last is in sight, the other may be below the keys.
    host->setFocus();
    QTRY_VERIFY(KeyOf("q") != nullptr && KeyOf("7") == nullptr);
}

void KeyboardPanelTest::fieldOfNumbersTakesLetters()
{
    auto* address = InGrid<QLineEdit>(OpenBasicPage(), 5, 1);
    address->clear();
    Tap(address);
    QTRY_VERIFY(IsKeyboardShown());

    TapKey("7");
    TapKey("ABC");
    TapKey("q");

    QTRY_COMPARE(address->text(), QString("7q"));
}

int main(int argc, char** argv)
{
    // As the program does before its application exists.
    qputenv("QT_IM_MODULE", "qtvirtualkeyboard");
    qputenv("QT_VIRTUALKEYBOARD_DESKTOP_DISABLE", "1");
    QApplication application(argc, argv);
    KeyboardPanelTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "KeyboardPanelTest.moc"
