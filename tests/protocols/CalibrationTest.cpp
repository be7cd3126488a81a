#include "protocols/Calibration.h"

#include <QTest>

class CalibrationTest : public QObject
{
    Q_OBJECT

private slots:
    void rotationIsTheTenthField_data();
    void rotationIsTheTenthField();
};

void CalibrationTest::rotationIsTheTenthField_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("expected");

    QTest::newRow("nothing") << QByteArray() << 0;
    QTest::newRow("rotation 2") << QByteArray("1 2 3 4 5 6 7 1024 600 2") << 2;
    QTest::newRow("with its line end") << QByteArray("1 2 3 4 5 6 7 1024 600 1\n") << 1;
    QTest::newRow("rotation 3") << QByteArray("1 2 3 4 5 6 7 1024 600 3") << 3;
    QTest::newRow("beyond 3") << QByteArray("1 2 3 4 5 6 7 1024 600 4") << 0;
    QTest::newRow("negative") << QByteArray("1 2 3 4 5 6 7 1024 600 -1") << 0;
    QTest::newRow("no number") << QByteArray("1 2 3 4 5 6 7 1024 600 up") << 0;
    QTest::newRow("nine fields") << QByteArray("1 2 3 4 5 6 7 1024 2") << 0;
    QTest::newRow("eleven fields") << QByteArray("1 2 3 4 5 6 7 1024 600 0 2") << 0;
    QTest::newRow("two blanks count") << QByteArray("1 2 3 4 5 6 7  1024 2") << 2;
    QTest::newRow("NUL ends it") << QByteArray("1 2 3 4 5 6 7 1024 600 2\0 3", 28) << 2;
}

void CalibrationTest::rotationIsTheTenthField()
{
    QFETCH(QByteArray, text);
    QFETCH(int, expected);
    QCOMPARE(RotationOf(text), expected);
}

QTEST_APPLESS_MAIN(CalibrationTest)
#include "CalibrationTest.moc"
