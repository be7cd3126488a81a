#include "frame/BodyWidget.h"
#include "frame/Look.h"
#include "frame/MoskTester.h"
#include "frame/Pages.h"
#include "simulated-board/Board.h"
#include "tests/Operate.h"

#include <QComboBox>
#include <QDir>
#include <QMetaEnum>
#include <QProcess>
#include <QTabBar>
#include <QTabWidget>

/// Describes the main window and each page, a line for a widget, and compares this with
/// tests/layout/. Where the languages differ, a line has the English and the Chinese text. Nothing
/// in it depends on the machine's fonts.
namespace
{

QString Quoted(const QString& text)
{
    return '"' + text + '"';
}

/// A width or a height: its pixels where it is fixed, else how it grows.
QString Extent(int least, int most, QSizePolicy::Policy policy)
{
    if (least == most) {
        return QString::number(least);
    }
    QString words = QMetaEnum::fromType<QSizePolicy::Policy>().valueToKey(policy);
    words += least > 0 ? QString(" from %1").arg(least) : QString();
    return words.toLower() + (most < QWIDGETSIZE_MAX ? QString(" to %1").arg(most) : QString());
}

bool IsHidden(const QWidget* widget)
{
    return widget->isHidden() && widget->testAttribute(Qt::WA_WState_ExplicitShowHide);
}

/// What a widget is called and what it shows.
QString Texts(const QWidget* widget)
{
    QStringList words{widget->metaObject()->className(), widget->objectName()};
    words.removeAll({});
    for (const char* property : {"text", "plainText", "placeholderText", "toolTip"}) {
        words += Quoted(widget->property(property).toString());
    }
    words.removeAll(Quoted({}));
    if (const auto* list = qobject_cast<const QComboBox*>(widget)) {
        for (int i = 0; i < list->count(); ++i) {
            words += Quoted(list->itemText(i));
        }
        words += list->count() > 0 ? "shows " + Quoted(list->currentText()) : "empty";
    }
    return words.join(' ');
}

/// What is special about a widget.
QStringList Peculiarities(const QWidget* widget)
{
    QStringList words;
    const auto add = [&words](bool isSo, const QString& what) {
        if (isSo) {
            words += what;
        }
    };
    add(!widget->isEnabled(), "disabled");
    add(IsHidden(widget), "hidden");
    add(widget->property("readOnly").toBool(), "read only");
    add(widget->property("editable").toBool(), "editable");
    add(widget->property("checked").toBool(), "checked");
    add(widget->property("echoMode").toInt() != QLineEdit::Normal, "typed text is hidden");
    add(widget->inputMethodHints().testFlag(Qt::ImhPreferNumbers), "keyboard begins with numbers");
    // The style sheet's titles, fields and buttons have letters of 18 pixels.
    const int letters = widget->font().pixelSize();
    add(letters > 0 && letters != 18, QString("letters of %1").arg(letters));
    add(!widget->styleSheet().isEmpty(), "style " + Quoted(widget->styleSheet()));
    for (const QByteArray& name : widget->dynamicPropertyNames()) {
        add(!name.startsWith('_'), name + ' ' + widget->property(name).toString());
    }
    return words;
}

/// How a layout arranges its widgets. The spacing of a grid is that between its columns, then that
/// between its rows.
QString Arrangement(const QLayout* layout)
{
    const QMargins around = layout->contentsMargins();
    const QString words = QString::asprintf(", margins %d %d %d %d, spacing ", around.left(),
                                            around.top(), around.right(), around.bottom());
    if (const auto* grid = qobject_cast<const QGridLayout*>(layout)) {
        return "grid" + words +
               QString::asprintf("%d %d", grid->horizontalSpacing(), grid->verticalSpacing());
    }
    return (layout->inherits("QVBoxLayout") ? "column" : "row") + words +
           QString::number(layout->spacing());
}

/// Where a layout has put one of its items: row and column, and how many of them if not one.
QString Place(QLayout* layout, int index)
{
    QString words;
    int stretch = 0;
    if (auto* grid = qobject_cast<QGridLayout*>(layout)) {
        int at[2];
        int size[2];
        grid->getItemPosition(index, &at[0], &at[1], &size[0], &size[1]);
        words = QString::asprintf("%d,%d ", at[0], at[1]);
        words += size[0] + size[1] > 2 ? QString::asprintf("(%dx%d) ", size[0], size[1]) : "";
        stretch = grid->rowStretch(at[0]) + grid->columnStretch(at[1]);
    } else if (auto* box = qobject_cast<QBoxLayout*>(layout)) {
        stretch = box->stretch(index);
    }
    words += stretch != 0 ? QString("stretch %1 ").arg(stretch) : QString();
    const int alignment = int(layout->itemAt(index)->alignment());
    return words + (alignment != 0 ? QString("alignment %1 ").arg(alignment) : QString());
}

/// Adds a widget and all that it holds, each on a line of its own.
void Describe(QWidget* widget, int depth, const QString& place, QStringList& lines)
{
    widget->ensurePolished();
    const QSizePolicy policy = widget->sizePolicy();
    QStringList words{QString(2 * depth, ' ') + place + Texts(widget)};
    words += Extent(widget->minimumWidth(), widget->maximumWidth(), policy.horizontalPolicy()) +
             " x " +
             Extent(widget->minimumHeight(), widget->maximumHeight(), policy.verticalPolicy());
    words += Peculiarities(widget);
    const auto* tabs = qobject_cast<QTabWidget*>(widget);
    QLayout* layout = tabs == nullptr ? widget->layout() : nullptr;
    if (layout != nullptr && !layout->isEmpty()) {
        words += Arrangement(layout);
    }
    if (tabs != nullptr && IsHidden(tabs->tabBar())) {
        words += "without tabs";
    }
    lines += words.join(", ");

    for (int i = 0; tabs != nullptr && i < tabs->count(); ++i) {
        Describe(tabs->widget(i), depth + 1, Quoted(tabs->tabText(i)) + ' ', lines);
    }
    for (int i = 0; layout != nullptr && i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (item->widget() != nullptr) {
            Describe(item->widget(), depth + 1, Place(layout, i), lines);
        } else {
            const QSize size = item->sizeHint();
            lines += QString(2 * depth + 2, ' ') + Place(layout, i) +
                     QString::asprintf("space of %d x %d", size.width(), size.height());
        }
    }
}

/// Joins the descriptions in both languages: where their texts differ, both stand on the line.
QString Joined(const QStringList& english, const QStringList& chinese)
{
    QString joined;
    for (int i = 0; i < qMax(english.size(), chinese.size()); ++i) {
        QStringList words = english.value(i).split('"');
        const QStringList others = chinese.value(i).split('"');
        for (int part = 0; part < words.size(); ++part) {
            words[part] +=
                words[part] != others.value(part) ? "\" / \"" + others.value(part) : QString();
        }
        joined += words.join('"') + '\n';
    }
    return joined;
}

} // namespace

class PageLayoutTest : public QObject
{
    Q_OBJECT

private slots:
    void pageIsAsDescribed_data();
    void pageIsAsDescribed();
};

void PageLayoutTest::pageIsAsDescribed_data()
{
    QTest::addColumn<int>("page");

    QTest::newRow("window") << int(BodyWidget::NoPage);
    for (const Page& page : allPages) {
        QTest::newRow(page.name) << int(page.id);
    }
}

void PageLayoutTest::pageIsAsDescribed()
{
    QFETCH(int, page);
    if (page == BodyWidget::CameraPage && QFile::exists("/dev/video0")) {
        QSKIP("The kernel here has cameras");
    }
    Board::Become("camera video0 #2060c0 Front camera\ncamera video1 #c06020 Rear camera\n");
    ApplyLook();
    QStringList lines[2];
    for (const bool isChinese : {false, true}) {
        Speak(isChinese ? "chinese" : "english");
        MoskTester window;
        window.GetBody()->OpenPage(page);
        QLayoutItem* shown = window.GetBody()->layout()->itemAt(0);
        Describe(shown != nullptr ? shown->widget() : window.centralWidget(), 0, "",
                 lines[isChinese ? 1 : 0]);
    }

    QVERIFY(QDir().mkpath(WRITTEN));
    const QString name = QString("/%1.txt").arg(QTest::currentDataTag());
    const QString expected = DESCRIPTIONS + name;
    const QString actual = WRITTEN + name;
    QFile file(actual);
    QVERIFY2(file.open(QIODevice::WriteOnly), "run this test with CTest, which lets it write");
    file.write(Joined(lines[0], lines[1]).toUtf8());
    file.close();
    QProcess difference;
    difference.setProcessChannelMode(QProcess::MergedChannels);
    difference.start("diff", {"-u", expected, actual});
    QVERIFY(difference.waitForFinished());
    QVERIFY2(difference.exitCode() == 0, difference.readAll() + "\nIf the page is right now: cp " +
                                             actual.toUtf8() + ' ' + expected.toUtf8());
}

QTEST_MAIN(PageLayoutTest)
#include "PageLayoutTest.moc"
