#include "frame/BodyWidget.h"
#include "frame/Look.h"
#include "frame/MoskTester.h"
#include "frame/Pages.h"
#include "instruments/MessageBoxes.h"
#include "instruments/Title.h"
#include "tests/Operate.h"

#include <QLabel>

#include <algorithm>

/// Checks what an operator sees of every page: nothing is cut, covered or outside the window.
namespace
{

QRect PlaceIn(const QWidget& window, const QWidget* widget)
{
    return {widget->mapTo(&window, QPoint()), widget->size()};
}

/// The page's widgets that the Tab key reaches, in its order.
QList<QWidget*> TabOrderOf(QWidget* page)
{
    QList<QWidget*> reached;
    QWidget* widget = page->nextInFocusChain();
    for (; widget != page; widget = widget->nextInFocusChain()) {
        if (page->isAncestorOf(widget) && widget->isVisible() && widget->isEnabled() &&
            widget->focusProxy() == nullptr && (widget->focusPolicy() & Qt::TabFocus) != 0) {
            reached += widget;
        }
    }
    return reached;
}

/// Compares a box with the page below it. The box has an edge on each side, a colour of its own,
/// and buttons that are large enough for a finger in a glove.
void CompareWithPage(QMessageBox& box, const QWidget& window)
{
    const QImage image = box.grab().toImage();
    const QColor inside = image.pixelColor(5, 5);
    QVERIFY(qAbs(inside.lightness() - QColor(240, 240, 240).lightness()) > 30);
    const QPoint middle = image.rect().center();
    for (const QPoint& edge : {QPoint(0, middle.y()), QPoint(image.width() - 1, middle.y()),
                               QPoint(middle.x(), 0), QPoint(middle.x(), image.height() - 1)}) {
        QVERIFY(qAbs(inside.lightness() - image.pixelColor(edge).lightness()) > 60);
    }
    QVERIFY(window.geometry().contains(box.geometry()));
    for (const QAbstractButton* button : box.buttons()) {
        QVERIFY(button->width() >= 100 && button->height() >= 40);
        QVERIFY(box.rect().contains(PlaceIn(box, button)));
    }
}

} // namespace

class LayoutTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void everyPageShowsItsTextsWhole_data();
    void everyPageShowsItsTextsWhole();
    void titleTooWideForItsPlaceGetsNarrowerLetters();
    void tabKeyGoesRowByRow_data();
    void tabKeyGoesRowByRow();
    void questionIsShownWhole_data();
    void questionIsShownWhole();
    void boxesAreMadeForThePageAndForGloves_data();
    void boxesAreMadeForThePageAndForGloves();
};

void LayoutTest::initTestCase()
{
    ApplyLook();
}

void LayoutTest::everyPageShowsItsTextsWhole_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("language");
    QTest::addColumn<QSize>("size");

    for (const Page& page : allPages) {
        for (const char* language : {"english", "chinese"}) {
            for (const QSize& size : {QSize(1024, 600), QSize(800, 480)}) {
                QTest::addRow("%s %s %dx%d", page.name, language, size.width(), size.height())
                    << int(page.id) << language << size;
            }
        }
    }
}

void LayoutTest::everyPageShowsItsTextsWhole()
{
    QFETCH(int, page);
    QFETCH(QString, language);
    QFETCH(QSize, size);
    Speak(language);
    MoskTester window;
    window.resize(size);
    window.show();

    window.GetBody()->OpenPage(page);
    QCoreApplication::processEvents();

    QCOMPARE(window.size(), size);
    QList<QWidget*> seen;
    for (auto* widget : window.GetBody()->findChildren<QWidget*>()) {
        auto* label = qobject_cast<QLabel*>(widget);
        auto* button = qobject_cast<QAbstractButton*>(widget);
        auto* line = qobject_cast<QLineEdit*>(widget);
        if (!widget->isVisible() || (label == nullptr && button == nullptr && line == nullptr)) {
            continue;
        }
        const QString text = label != nullptr    ? label->text()
                             : button != nullptr ? button->text()
                                                 : line->text();
        if (text.isEmpty()) {
            continue;
        }
        QVERIFY2(widget->fontMetrics().horizontalAdvance(text) <= widget->width() &&
                     widget->fontMetrics().height() <= widget->height(),
                 qPrintable("cut: " + text));
        const QRect place = PlaceIn(window, widget);
        QVERIFY2(window.rect().contains(place), qPrintable("outside: " + text));
        for (const QWidget* other : qAsConst(seen)) {
            QVERIFY2(!place.intersects(PlaceIn(window, other)), qPrintable("covered: " + text));
        }
        seen += widget;
    }
    QVERIFY2(seen.size() >= 2, "the page is empty");
}

void LayoutTest::titleTooWideForItsPlaceGetsNarrowerLetters()
{
    QWidget page;
    const auto stretch = [&page](const QString& text) {
        return NewTitle(text, {100, 30}, &page)->font().stretch();
    };

    QVERIFY(stretch("Short") == 0 || stretch("Short") == QFont::Unstretched);
    const int ofALongOne = stretch("A longer title:");
    QVERIFY(ofALongOne > 50 && ofALongOne < QFont::Unstretched);
    // Narrower letters than these could not be read: this title is cut.
    QCOMPARE(stretch("A title that no letters make narrow enough for its place"), 50);
}

void LayoutTest::tabKeyGoesRowByRow_data()
{
    QTest::addColumn<int>("page");
    for (const Page& page : allPages) {
        // Its column of buttons stands beside views that are only read.
        if (page.id != BodyWidget::ProductionPage) {
            QTest::newRow(page.name) << int(page.id);
        }
    }
}

void LayoutTest::tabKeyGoesRowByRow()
{
    QFETCH(int, page);
    MoskTester window;
    window.resize(1024, 600);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    window.GetBody()->OpenPage(page);
    QCoreApplication::processEvents();
    QWidget* shown = window.GetBody()->layout()->itemAt(0)->widget();
    QList<QWidget*> rows = TabOrderOf(shown);
    QVERIFY(rows.size() > 1);
    std::stable_sort(rows.begin(), rows.end(), [&](const QWidget* first, const QWidget* second) {
        // A view takes the height left, beside the rows or below them: it comes last.
        const bool isView = first->inherits("QAbstractScrollArea");
        if (isView != second->inherits("QAbstractScrollArea")) {
            return !isView;
        }
        const QRect one = PlaceIn(window, first);
        const QRect other = PlaceIn(window, second);
        const bool isOneRow = one.top() <= other.center().y() && other.top() <= one.center().y();
        return isOneRow ? one.left() < other.left() : one.top() < other.top();
    });

    rows.first()->setFocus(Qt::TabFocusReason);
    QList<QWidget*> reached;
    for (int i = 0; i < rows.size(); ++i) {
        reached += window.focusWidget();
        QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    }

    QCOMPARE(reached, rows);
    QVERIFY(!shown->isAncestorOf(window.focusWidget()));
}

void LayoutTest::questionIsShownWhole_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("a short one") << "OK?";
    QTest::newRow("a line") << "Are you sure switch the HMI system?";
    QTest::newRow("two lines") << "Confirm that the testing has been completed?";
    QTest::newRow("Chinese") << QString::fromUtf8("确认要切换HMI系统吗?");
}

void LayoutTest::questionIsShownWhole()
{
    QFETCH(QString, text);
    AtTheBox(QMessageBox::No, [](QMessageBox& box) {
        auto* label = box.findChild<QLabel*>("qt_msgbox_label");
        const QRect room = label->contentsRect();
        const QRect needed = label->fontMetrics().boundingRect(
            room, label->wordWrap() ? Qt::TextWordWrap : 0, label->text());
        QVERIFY(needed.width() <= room.width() && needed.height() <= room.height());
        QVERIFY(box.width() <= 800);
    });

    QVERIFY(!AskOperator(nullptr, text));
}

void LayoutTest::boxesAreMadeForThePageAndForGloves_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("presses");
    QTest::addColumn<QString>("language");

    for (const char* language : {"english", "chinese"}) {
        const QByteArray in = QByteArray(" in ") + language;
        const auto add = [&](const char* name, int page, const char* button, int presses) {
            QTest::newRow(name + in) << page << button << presses << language;
        };
        add("port that cannot be opened", BodyWidget::SerialPage, "Label_1000301", 1);
        add("HMI asked for and confirmed", BodyWidget::HomePage, "Label_1000204", 2);
        add("end asked for and confirmed", BodyWidget::HomePage, "Label_1000207", 2);
        add("settings written", BodyWidget::RemoteAccessPage, "Label_1010005", 1);
    }
}

void LayoutTest::boxesAreMadeForThePageAndForGloves()
{
    QFETCH(int, page);
    QFETCH(QString, button);
    QFETCH(int, presses);
    QFETCH(QString, language);
    QFile::remove("/etc/qttestend");
    Speak(language);
    MoskTester window;
    window.resize(800, 480);
    window.show();
    window.GetBody()->OpenPage(page);
    QAbstractButton* opensTheBox = nullptr;
    for (auto* each : window.GetBody()->findChildren<QAbstractButton*>()) {
        opensTheBox = each->text() == Text(qPrintable(button)) ? each : opensTheBox;
    }
    QVERIFY(opensTheBox != nullptr);

    int seen = 0;
    for (int i = 0; i < presses; ++i) {
        QTimer::singleShot(0, qApp, [&window, &seen] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box != nullptr);
            ++seen;
            CompareWithPage(*box, window);
            QTest::mouseClick(box->buttons().first(), Qt::LeftButton);
        });
        QTest::mouseClick(opensTheBox, Qt::LeftButton);
    }

    QCOMPARE(seen, presses);
}

QTEST_MAIN(LayoutTest)
#include "LayoutTest.moc"
