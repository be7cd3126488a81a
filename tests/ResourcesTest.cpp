#include "tests/Texts.h"

#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>

namespace
{

const QByteArray mark = "\xef\xbb\xbf";

/// The lines of a language file that define a text.
QStringList TextLinesOf(const QString& language)
{
    QFile file(":/language/" + language + ".ini");
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QString text = QString::fromUtf8(file.readAll().mid(mark.size()));
    return text.split("\r\n").filter(QRegularExpression("^[^#].*="));
}

bool IsKnown(const QString& key)
{
    return std::any_of(std::begin(knownTexts), std::end(knownTexts),
                       [&key](const KnownText& text) { return text.key == key; });
}

} // namespace

class ResourcesTest : public QObject
{
    Q_OBJECT

private slots:
    void filesBeginWithTheirMarkAndEndEveryLineInCrLf_data();
    void filesBeginWithTheirMarkAndEndEveryLineInCrLf();
    void everyTextIsItsKeysAndNoOtherIsThere();
    void everyKeyInTheCodeExists();
    void imagesHaveTheirSizes_data();
    void imagesHaveTheirSizes();
};

void ResourcesTest::filesBeginWithTheirMarkAndEndEveryLineInCrLf_data()
{
    QTest::addColumn<QString>("language");

    QTest::newRow("english") << "english";
    QTest::newRow("chinese") << "chinese";
}

void ResourcesTest::filesBeginWithTheirMarkAndEndEveryLineInCrLf()
{
    QFETCH(QString, language);
    QFile file(":/language/" + language + ".ini");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray content = file.readAll();

    QVERIFY(content.startsWith(mark));
    QVERIFY(content.endsWith("\r\n"));
    QCOMPARE(content.count('\n'), content.count("\r\n"));
    QCOMPARE(content.count('\r'), content.count("\r\n"));
    const QRegularExpression form("^(|#.*|Label_1[0-9]{6}=.+)$");
    for (const QString& line : QString::fromUtf8(content.mid(mark.size())).split("\r\n")) {
        QVERIFY2(form.match(line).hasMatch(), qPrintable(line));
    }
}

void ResourcesTest::everyTextIsItsKeysAndNoOtherIsThere()
{
    QStringList english;
    QStringList chinese;
    for (const KnownText& text : knownTexts) {
        english += QString("%1=%2").arg(text.key, text.english);
        chinese += QString("%1=%2").arg(text.key, text.chinese);
    }

    QCOMPARE(TextLinesOf("english"), english);
    QCOMPARE(TextLinesOf("chinese"), chinese);
}

void ResourcesTest::everyKeyInTheCodeExists()
{
    const QRegularExpression key("Label_[0-9]{7}");
    for (const char* folder : {"frame", "instruments", "pages", "protocols"}) {
        int found = 0;
        QDirIterator files(QString(SOURCE_DIR "/") + folder, QDir::Files);
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            auto matches = key.globalMatch(QString::fromUtf8(file.readAll()));
            while (matches.hasNext()) {
                const QString used = matches.next().captured();
                QVERIFY2(IsKnown(used), qPrintable(used + " in " + file.fileName()));
                ++found;
            }
        }
        QVERIFY2(found > 0, folder);
    }
}

void ResourcesTest::imagesHaveTheirSizes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");

    QTest::newRow("logo") << "logo" << QSize(138, 70);
    for (const char* name : {"arrow_up", "arrow_down", "arrow_left", "arrow_right"}) {
        QTest::newRow(name) << name << QSize(10, 10);
    }
}

void ResourcesTest::imagesHaveTheirSizes()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    const QImage image(":/images/" + name + ".png");

    QCOMPARE(image.size(), size);
    QVERIFY(image.hasAlphaChannel());
}

QTEST_GUILESS_MAIN(ResourcesTest)
#include "ResourcesTest.moc"
