#include "protocols/CanFrame.h"

#include <QTest>

#include <algorithm>

#include <linux/can.h>

class CanFrameTest : public QObject
{
    Q_OBJECT

private slots:
    void frameIsWrittenAsText_data();
    void frameIsWrittenAsText();
    void hexadecimalTextFillsTheLastBytes_data();
    void hexadecimalTextFillsTheLastBytes();
};

void CanFrameTest::frameIsWrittenAsText_data()
{
    QTest::addColumn<unsigned>("identifier");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");

    const QByteArray three = QByteArray::fromHex("112233");
    const QByteArray eight = QByteArray::fromHex("00ff7f8001aBcD0f");
    QTest::newRow("standard") << 0x123U << three << "id:291,len:3,data:1122330000000000";
    QTest::newRow("extended") << (CAN_EFF_FLAG | 1) << eight << "id:1,len:8,data:00ff7f8001abcd0f";
    QTest::newRow("largest") << (CAN_EFF_FLAG | CAN_EFF_MASK) << QByteArray()
                             << "id:536870911,len:0,data:0000000000000000";
    QTest::newRow("remote") << (CAN_RTR_FLAG | 0x123) << QByteArray()
                            << "id:1073742115,len:0,data:0000000000000000";
    QTest::newRow("extended remote") << (CAN_EFF_FLAG | CAN_RTR_FLAG | 1) << QByteArray()
                                     << "id:1073741825,len:0,data:0000000000000000";
    QTest::newRow("error") << (CAN_ERR_FLAG | 4) << QByteArray(8, '\0')
                           << "id:536870916,len:8,data:0000000000000000";
    QTest::newRow("identifier 0") << 0U << QByteArray("1") << "id:0,len:1,data:3100000000000000";
}

void CanFrameTest::frameIsWrittenAsText()
{
    QFETCH(unsigned, identifier);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    can_frame frame = {};
    frame.can_id = identifier;
    frame.can_dlc = static_cast<quint8>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), frame.data);
    QCOMPARE(CanFrameText(frame), text);
}

void CanFrameTest::hexadecimalTextFillsTheLastBytes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("data");

    const auto add = [](const char* name, const char* text, const char* data) {
        QTest::newRow(name) << QString(text) << QByteArray(data);
    };
    add("all eight", "1122334455667788", "1122334455667788");
    add("one", "FF", "00000000000000ff");
    add("lower case", "abc", "0000000000000abc");
    add("with 0x", "0x12", "0000000000000012");
    add("no number", "xyz", "0000000000000000");
    add("nothing", "", "0000000000000000");
    add("negative", "-1", "0000000000000000");
    add("largest", "FEDCBA9876543210", "fedcba9876543210");
    add("17 digits, first 0", "0FEDCBA9876543210", "fedcba9876543210");
    add("blanks around", "  12 ", "0000000000000012");
    add("blanks between", "11 22", "0000000000000000");
    add("too long", "11223344556677889", "0000000000000000");
}

void CanFrameTest::hexadecimalTextFillsTheLastBytes()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, data);
    const can_frame frame = CanFrameOf(text);
    QCOMPARE(frame.can_id, CAN_EFF_FLAG | 1U);
    QCOMPARE(int(frame.can_dlc), 8);
    const auto* bytes = reinterpret_cast<const char*>(frame.data);
    QCOMPARE(QByteArray(bytes, sizeof frame.data).toHex(), data);
}

QTEST_APPLESS_MAIN(CanFrameTest)
#include "CanFrameTest.moc"
