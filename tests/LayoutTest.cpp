#include "frame/BodyWidget.h"
#include "frame/MoskSettings.h"
#include "frame/MoskTester.h"
#include "instruments/MessageBoxes.h"
#include "tests/Operate.h"

#include <QLabel>

#include <memory>

/// What an operator sees of every page: nothing cut, nothing covered, nothing outside the window.
class LayoutTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void everyPageShowsItsTextsWhole_data();
    void everyPageShowsItsTextsWhole();
    void questionIsShownWhole_data();
    void questionIsShownWhole();
};

void LayoutTest::initTestCase()
{
    ApplyStyleSheet();
}

void LayoutTest::everyPageShowsItsTextsWhole_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("language");
    QTest::addColumn<QSize>("size");

    for (int page = BodyWidget::HomePage; page <= BodyWidget::CameraPage; ++page) {
        for (const char* language : {"english", "chinese"}) {
            for (const QSize& size : {QSize(1024, 600), QSize(800, 480)}) {
                QTest::addRow("%d %s %dx%d", page, language, size.width(), size.height())
                    << page << language << size;
            }
        }
    }
}

void LayoutTest::everyPageShowsItsTextsWhole()
{
    QFETCH(int, page);
    QFETCH(QString, language);
    QFETCH(QSize, size);
    MoskSettings::GetInstance()->SetValue("Language", language);
    MoskTranslator::Reload();
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
        const QRect place(widget->mapTo(&window, QPoint()), widget->size());
        QVERIFY2(window.rect().contains(place), qPrintable("outside: " + text));
        for (const QWidget* other : qAsConst(seen)) {
            const QRect otherPlace(other->mapTo(&window, QPoint()), other->size());
            QVERIFY2(!place.intersects(otherPlace), qPrintable("covered: " + text));
        }
        seen += widget;
    }
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

QTEST_MAIN(LayoutTest)
#include "LayoutTest.moc"
