#include "protocols/KernelVersion.h"

#include <QTest>

class KernelVersionTest : public QObject
{
    Q_OBJECT

private slots:
    void buildStampIsTheLastSixWords_data();
    void buildStampIsTheLastSixWords();
};

void KernelVersionTest::buildStampIsTheLastSixWords_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("a kernel's line")
        << "Linux version 3.10.65 (builder@host) #5 Tue Oct 18 10:21:07 CST 2022"
        << "Tue Oct 18 10:21:07 CST 2022";
    QTest::newRow("seven words") << "1 2 3 4 5 6 7"
                                 << "2 3 4 5 6 7";
    QTest::newRow("six words") << "1 2 3 4 5 6"
                               << "";
    QTest::newRow("two blanks") << "1 2 3  5 6 7"
                                << "2 3  5 6 7";
    QTest::newRow("nothing") << ""
                             << "";
}

void KernelVersionTest::buildStampIsTheLastSixWords()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(BuildStampOf(text), expected);
}

QTEST_APPLESS_MAIN(KernelVersionTest)
#include "KernelVersionTest.moc"
