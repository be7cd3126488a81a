#include "texts/MoskTranslator.h"
#include "texts/MoskSettings.h"

#include <QTest>

class MoskTranslatorTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void languageIsTheSettings_data();
    void languageIsTheSettings();
    void lineIsCutAtItsFirstEqualsSign_data();
    void lineIsCutAtItsFirstEqualsSign();
    void unknownKeyIsShownAsItIs();
    void reloadForgetsTheOldLanguage();
    void releasedTranslatorLoadsAgain();
};

void MoskTranslatorTest::init()
{
    MoskSettings::GetInstance()->SetValue("Language", "english");
    MoskTranslator::Reload();
}

void MoskTranslatorTest::languageIsTheSettings_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("home");

    const QString chinese = QString::fromUtf8("首页");
    QTest::newRow("English") << "english"
                             << "Home";
    QTest::newRow("Chinese") << "chinese" << chinese;
    QTest::newRow("none") << "" << chinese;
    QTest::newRow("of no file") << "french" << chinese;
    QTest::newRow("other case") << "English" << chinese;
    QTest::newRow("out of the folder") << "../../etc/passwd" << chinese;
    QTest::newRow("place marker") << "%1" << chinese;
}

void MoskTranslatorTest::languageIsTheSettings()
{
    QFETCH(QString, language);
    QFETCH(QString, home);
    MoskSettings::GetInstance()->SetValue("Language", language);

    QCOMPARE(MoskTranslator::Reload(), 0);

    QCOMPARE(MoskTranslator::Translate("Label_1000100"), home);
}

void MoskTranslatorTest::lineIsCutAtItsFirstEqualsSign_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");

    QTest::newRow("title line") << "#Label_1"
                                << "#Label_1";
    QTest::newRow("text with equals signs") << "Label_2"
                                            << "a=b=c";
    QTest::newRow("blank before the key") << "Label_3"
                                          << "Label_3";
    QTest::newRow("blank behind the key") << "Label_4"
                                          << "Label_4";
    QTest::newRow("key with its blank") << "Label_4 "
                                        << "blank behind";
    QTest::newRow("blanks of the text") << "Label_5"
                                        << " blank kept ";
    QTest::newRow("key that occurs twice") << "Label_6"
                                           << "last";
    QTest::newRow("line without equals sign") << "no text"
                                              << "no text";
    QTest::newRow("empty text") << "Label_7"
                                << "";
    QTest::newRow("UTF-8 by the byte-order mark") << "Label_8" << QString::fromUtf8("测试");
    QTest::newRow("last line without an end") << "Label_9"
                                              << "without a line end";
}

void MoskTranslatorTest::lineIsCutAtItsFirstEqualsSign()
{
    QFETCH(QString, key);
    QFETCH(QString, text);
    MoskSettings::GetInstance()->SetValue("Language", "trial");
    QCOMPARE(MoskTranslator::Reload(), 0);

    QCOMPARE(MoskTranslator::Translate(key), text);
}

void MoskTranslatorTest::unknownKeyIsShownAsItIs()
{
    QCOMPARE(MoskTranslator::Translate("Label_9999999"), QString("Label_9999999"));
    QCOMPARE(MoskTranslator::Translate(""), QString());
}

void MoskTranslatorTest::reloadForgetsTheOldLanguage()
{
    MoskSettings::GetInstance()->SetValue("Language", "trial");
    MoskTranslator::Reload();
    QCOMPARE(MoskTranslator::Translate("Label_6"), QString("last"));

    MoskSettings::GetInstance()->SetValue("Language", "chinese");
    MoskTranslator::Reload();

    QCOMPARE(MoskTranslator::Translate("Label_6"), QString("Label_6"));
    QCOMPARE(MoskTranslator::Translate("Label_1000100"), QString::fromUtf8("首页"));
}

void MoskTranslatorTest::releasedTranslatorLoadsAgain()
{
    MoskTranslator::ReleaseTranslator();
    MoskTranslator::ReleaseTranslator();
    MoskSettings::GetInstance()->SetValue("Language", "chinese");

    QCOMPARE(MoskTranslator::Translate("Label_1000100"), QString::fromUtf8("首页"));
}

QTEST_GUILESS_MAIN(MoskTranslatorTest)
#include "MoskTranslatorTest.moc"
