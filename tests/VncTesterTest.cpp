#include "pages/VncTester.h"
#include "frame/MoskSettings.h"
#include "simulated-board/Board.h"
#include "tests/FrpIni.h"
#include "tests/Operate.h"

#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QSettings>

#include <sys/mount.h>
#include <sys/stat.h>

namespace
{

const char* const serverPath = "/etc/vnclinuxfb.conf";
const char* const clientPath = "/etc/frpc.ini";

enum Row { Enable, ServerAddress, ServerPort, RemotePort, Security, Password, Set, Filler };

// As such a file is written by hand, with what a rewrite would spoil.
const char* const clientFile = "# relay of the line\n"
                               "[common]\n"
                               "server_addr = 203.0.113.7\n"
                               "server_port = 7000\n"
                               "token = a;b\n"
                               "user=\n"
                               "\n"
                               "; the screen\n"
                               "[vnc]\n"
                               "type = tcp\n"
                               "local_ip = 127.0.0.1\n"
                               "local_port = 5900\n"
                               "remote_port = 6000\n"
                               "\n"
                               "[ssh]\n"
                               "type = tcp\n"
                               "remote_port = 6022\n";

} // namespace

class VncTesterTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void layoutHasARowForEachSetting_data();
    void layoutHasARowForEachSetting();
    void layoutHasTheMarginsOfTheGrid();

    void withoutFilesThePageIsEmpty();
    void fieldsShowWhatTheFilesHold();
    void enableIsOnForOneAlone_data();
    void enableIsOnForOneAlone();
    void authenticationIsOnAboveOne_data();
    void authenticationIsOnAboveOne();
    void fieldsAreNotReadAgain();
    void anyTextInAPortIsShown_data();
    void anyTextInAPortIsShown();
    void portFieldsTakeOnlyPorts_data();
    void portFieldsTakeOnlyPorts();

    void setCreatesTheFiles();
    void setWritesTheBoxesAsNumbers_data();
    void setWritesTheBoxesAsNumbers();
    void setChangesNoOtherLine();
    void setWithoutChangeWritesNothing();
    void emptyFieldIsWrittenEmpty();
    void valueSurvivesTheRoundTrip_data();
    void valueSurvivesTheRoundTrip();
    void filesAreWrittenInOrderAndSynchronised();

    void successIsTold_data();
    void successIsTold();
    void successIsToldWhateverBecameOfTheFiles_data();
    void successIsToldWhateverBecameOfTheFiles();

    void strangeFilesOpen_data();
    void strangeFilesOpen();

private:
    QLineEdit* Field(Row row) { return InGrid<QLineEdit>(m_page, row, 1); }
    QCheckBox* Box(Row row) { return InGrid<QCheckBox>(m_page, row, 0); }
    void Rebuild();
    void PressSet();

    ToolVncTest* m_page = nullptr;
};

void VncTesterTest::initTestCase()
{
    ApplyStyleSheet();
}

void VncTesterTest::init()
{
    Board::Become("");
    MoskSettings::GetInstance()->SetValue("Language", "english");
    MoskTranslator::Reload();
    Rebuild();
}

void VncTesterTest::cleanup()
{
    delete m_page;
    m_page = nullptr;
    Board::RemoveTools();
    for (const char* path : {serverPath, clientPath}) {
        QFileInfo(path).isDir() && !QFileInfo(path).isSymLink() ? QDir(path).removeRecursively()
                                                                : QFile::remove(path);
    }
}

void VncTesterTest::Rebuild()
{
    delete m_page;
    m_page = new ToolVncTest(nullptr);
    m_page->resize(1024, 550);
    m_page->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_page));
}

/// Presses Set and the box's button.
void VncTesterTest::PressSet()
{
    bool told = false;
    AtTheBox(QMessageBox::Ok, [&told](const QMessageBox& box) {
        QCOMPARE(box.text(), Text("Label_1010006"));
        told = true;
    });
    QTest::mouseClick(InGrid<QPushButton>(m_page, Set, 0), Qt::LeftButton);
    QVERIFY(told);
}

void VncTesterTest::layoutHasARowForEachSetting_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("title");

    const QStringList english = {
        "Enable",        "Server ip:", "Server port:", "VNC remote port:", "Enable authentication",
        "VNC password:", "Set"};
    const QStringList chinese = {"启用",         "服务器地IP：", "服务器端口：", "VNC远端端口：",
                                 "启用密码认证", "VNC密码：",    "设置"};
    for (int row = Enable; row <= Set; ++row) {
        QTest::addRow("english %d", row) << "english" << row << english[row];
        QTest::addRow("chinese %d", row) << "chinese" << row << chinese[row];
    }
}

void VncTesterTest::layoutHasARowForEachSetting()
{
    QFETCH(QString, language);
    QFETCH(int, row);
    QFETCH(QString, title);
    MoskSettings::GetInstance()->SetValue("Language", language);
    MoskTranslator::Reload();
    Rebuild();

    auto* titleWidget = InGrid<QWidget>(m_page, row, 0);
    QVERIFY(titleWidget != nullptr);
    QCOMPARE(titleWidget->property("text").toString(), title);
    if (row == Set) {
        QVERIFY(InGrid<QPushButton>(m_page, row, 0) != nullptr);
        QCOMPARE(titleWidget->size(), QSize(100, 30));
        return;
    }
    QCOMPARE(titleWidget->size(), QSize(180, 30));
    QVERIFY2(titleWidget->sizeHint().width() <= 180, "the text is cut");
    if (row == Enable || row == Security) {
        QVERIFY(Box(Row(row)) != nullptr);
    } else {
        QCOMPARE(Field(Row(row))->size(), QSize(240, 30));
        QCOMPARE(Field(Row(row))->echoMode(), QLineEdit::Normal);
    }
}

void VncTesterTest::layoutHasTheMarginsOfTheGrid()
{
    auto* layout = qobject_cast<QGridLayout*>(m_page->layout());
    QCOMPARE(layout->contentsMargins(), QMargins(40, 20, 40, 20));
    QCOMPARE(layout->verticalSpacing(), 20);
    QCOMPARE(layout->horizontalSpacing(), 20);
    QCOMPARE(Box(Enable)->geometry().topLeft(), QPoint(40, 20));
    QCOMPARE(Field(ServerAddress)->geometry().topLeft(), QPoint(40 + 180 + 20, 20 + 30 + 20));
    QVERIFY(InGrid<QWidget>(m_page, Enable, 2) != nullptr);
    QVERIFY(InGrid<QWidget>(m_page, Filler, 2) != nullptr);
}

void VncTesterTest::withoutFilesThePageIsEmpty()
{
    QVERIFY(!Box(Enable)->isChecked());
    QVERIFY(!Box(Security)->isChecked());
    for (const Row row : {ServerAddress, ServerPort, RemotePort, Password}) {
        QCOMPARE(Field(row)->text(), QString());
    }
    QVERIFY(!QFile::exists(serverPath));
    QVERIFY(!QFile::exists(clientPath));
}

void VncTesterTest::fieldsShowWhatTheFilesHold()
{
    Board::WriteFile(serverPath, "enable=1\nsecurity=2\npassword=secret\n");
    Board::WriteFile(clientPath, clientFile);
    Rebuild();

    QVERIFY(Box(Enable)->isChecked());
    QVERIFY(Box(Security)->isChecked());
    QCOMPARE(Field(Password)->text(), QString("secret"));
    QCOMPARE(Field(ServerAddress)->text(), QString("203.0.113.7"));
    QCOMPARE(Field(ServerPort)->text(), QString("7000"));
    QCOMPARE(Field(RemotePort)->text(), QString("6000"));
}

void VncTesterTest::enableIsOnForOneAlone_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("on");

    QTest::newRow("1") << QByteArray("enable=1\n") << true;
    QTest::newRow("1 in the general section") << QByteArray("[General]\nenable=1\n") << true;
    QTest::newRow("1 in quotes") << QByteArray("enable=\"1\"\n") << true;
    QTest::newRow("1 with blanks") << QByteArray("enable =  1 \n") << true;
    QTest::newRow("1 with a comment") << QByteArray("enable=1 ; on\n") << true;
    QTest::newRow("1 without line end") << QByteArray("enable=1") << true;
    QTest::newRow("1 and CR LF") << QByteArray("security=1\r\nenable=1\r\n") << true;
    QTest::newRow("0") << QByteArray("enable=0\n") << false;
    QTest::newRow("2") << QByteArray("enable=2\n") << false;
    QTest::newRow("-1") << QByteArray("enable=-1\n") << false;
    QTest::newRow("empty") << QByteArray("enable=\n") << false;
    QTest::newRow("word") << QByteArray("enable=true\n") << false;
    QTest::newRow("number and word") << QByteArray("enable=1x\n") << false;
    QTest::newRow("huge") << QByteArray("enable=4294967297\n") << false;
    QTest::newRow("list") << QByteArray("enable=1,1\n") << false;
    QTest::newRow("in another section") << QByteArray("[vnc]\nenable=1\n") << false;
    QTest::newRow("no key") << QByteArray("security=1\n") << false;
}

void VncTesterTest::enableIsOnForOneAlone()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, on);
    Board::WriteFile(serverPath, content);
    Rebuild();

    QCOMPARE(Box(Enable)->isChecked(), on);
}

void VncTesterTest::authenticationIsOnAboveOne_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("on");

    QTest::newRow("0") << QByteArray("0") << false;
    QTest::newRow("1") << QByteArray("1") << false;
    QTest::newRow("2") << QByteArray("2") << true;
    QTest::newRow("3") << QByteArray("3") << true;
    QTest::newRow("-2") << QByteArray("-2") << false;
    QTest::newRow("word") << QByteArray("vnc") << false;
    QTest::newRow("huge") << QByteArray("99999999999999999999") << false;
    QTest::newRow("empty") << QByteArray("") << false;
}

void VncTesterTest::authenticationIsOnAboveOne()
{
    QFETCH(QByteArray, value);
    QFETCH(bool, on);
    Board::WriteFile(serverPath, "security=" + value + "\n");
    Rebuild();

    QCOMPARE(Box(Security)->isChecked(), on);
}

void VncTesterTest::fieldsAreNotReadAgain()
{
    Board::WriteFile(clientPath, clientFile);
    Field(ServerAddress)->setText("typed");
    QCoreApplication::processEvents();

    QCOMPARE(Field(ServerAddress)->text(), QString("typed"));
    QCOMPARE(Field(ServerPort)->text(), QString());
}

void VncTesterTest::anyTextInAPortIsShown_data()
{
    QTest::addColumn<QByteArray>("port");
    QTest::addColumn<QString>("shown");

    QTest::newRow("text") << QByteArray("{{ .Envs.PORT }}") << "{{ .Envs.PORT }}";
    QTest::newRow("too large") << QByteArray("70000") << "70000";
    QTest::newRow("huge") << QByteArray("99999999999999999999") << "99999999999999999999";
    QTest::newRow("negative") << QByteArray("-1") << "-1";
    QTest::newRow("blanks around") << QByteArray("  7000  ") << "7000";
}

void VncTesterTest::anyTextInAPortIsShown()
{
    QFETCH(QByteArray, port);
    QFETCH(QString, shown);
    Board::WriteFile(clientPath, "[common]\nserver_port=" + port + "\n");
    Rebuild();

    QCOMPARE(Field(ServerPort)->text(), shown);
}

void VncTesterTest::portFieldsTakeOnlyPorts_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("taken");

    QTest::newRow("largest") << "65535"
                             << "65535";
    QTest::newRow("smallest") << "0"
                              << "0";
    QTest::newRow("beyond the largest") << "655360"
                                        << "65536";
    QTest::newRow("letters") << "a7b0c"
                             << "70";
    QTest::newRow("sign") << "-7"
                          << "7";
    QTest::newRow("blank and point") << " 7.0"
                                     << "70";
}

void VncTesterTest::portFieldsTakeOnlyPorts()
{
    QFETCH(QString, typed);
    QFETCH(QString, taken);
    for (const Row row : {ServerPort, RemotePort}) {
        QTest::keyClicks(Field(row), typed);
        QCOMPARE(Field(row)->text(), taken);
        // A number of as many digits is not refused while it is typed, only not acceptable.
        QCOMPARE(Field(row)->hasAcceptableInput(), taken.toInt() <= 65535);
    }
}

void VncTesterTest::setCreatesTheFiles()
{
    PressSet();

    QCOMPARE(Board::ReadFile(serverPath),
             QByteArray("[General]\nenable=0\nsecurity=1\npassword=\n"));
    QCOMPARE(Board::ReadFile(clientPath),
             QByteArray("[common]\nserver_addr=\nserver_port=\n\n[vnc]\nremote_port=\n"));
    QCOMPARE(QFile::permissions(serverPath) & (QFile::WriteGroup | QFile::WriteOther),
             QFile::Permissions());
}

void VncTesterTest::setWritesTheBoxesAsNumbers_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");

    QTest::newRow("authentication 3 becomes 2") << QByteArray("enable=1\nsecurity=3\npassword=\n")
                                                << QByteArray("enable=1\nsecurity=2\npassword=\n");
    QTest::newRow("authentication 0 becomes 1") << QByteArray("enable=1\nsecurity=0\npassword=\n")
                                                << QByteArray("enable=1\nsecurity=1\npassword=\n");
    QTest::newRow("enable 2 becomes 0") << QByteArray("enable=2\nsecurity=2\npassword=\n")
                                        << QByteArray("enable=0\nsecurity=2\npassword=\n");
    QTest::newRow("words become numbers") << QByteArray("enable=yes\nsecurity=on\npassword=\n")
                                          << QByteArray("enable=0\nsecurity=1\npassword=\n");
    QTest::newRow("missing keys") << QByteArray("enable=1\n")
                                  << QByteArray("enable=1\nsecurity=1\npassword=\n");
}

void VncTesterTest::setWritesTheBoxesAsNumbers()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    Board::WriteFile(serverPath, before);
    Rebuild();

    PressSet();

    QCOMPARE(Board::ReadFile(serverPath), after);
}

void VncTesterTest::setChangesNoOtherLine()
{
    const QByteArray serverFile = "# screen\nenable=0\n\npassword=old\n[other]\nenable=7\n";
    Board::WriteFile(serverPath, serverFile);
    Board::WriteFile(clientPath, clientFile);
    Rebuild();
    QTest::mouseClick(Box(Enable), Qt::LeftButton, {}, QPoint(10, 15));
    QTest::mouseClick(Box(Security), Qt::LeftButton, {}, QPoint(10, 15));
    Field(Password)->setText("new");
    Field(ServerAddress)->setText("relay.example.com");
    Field(ServerPort)->setText("7001");
    Field(RemotePort)->setText("6001");

    PressSet();

    QCOMPARE(Board::ReadFile(serverPath),
             QByteArray("# screen\nenable=1\n\npassword=new\nsecurity=2\n[other]\nenable=7\n"));
    QByteArray expected = clientFile;
    expected.replace("203.0.113.7", "relay.example.com");
    expected.replace("= 7000", "= 7001");
    expected.replace("= 6000", "= 6001");
    QCOMPARE(Board::ReadFile(clientPath), expected);
    const auto client = ReadAsFrp(Board::ReadFile(clientPath));
    QCOMPARE(client["common/server_addr"], QByteArray("relay.example.com"));
    QCOMPARE(client["common/server_port"], QByteArray("7001"));
    QCOMPARE(client["common/token"], QByteArray("a;b"));
    QCOMPARE(client["vnc/remote_port"], QByteArray("6001"));
    QCOMPARE(client["ssh/remote_port"], QByteArray("6022"));
}

void VncTesterTest::setWithoutChangeWritesNothing()
{
    const QByteArray serverFile = "enable = 1 ; on\nsecurity=\"2\"\npassword=a\\x62\n";
    Board::WriteFile(serverPath, serverFile);
    Board::WriteFile(clientPath, clientFile);
    Rebuild();

    PressSet();

    QCOMPARE(Board::ReadFile(serverPath), serverFile);
    QCOMPARE(Board::ReadFile(clientPath), QByteArray(clientFile));
}

void VncTesterTest::emptyFieldIsWrittenEmpty()
{
    Board::WriteFile(clientPath, clientFile);
    Rebuild();
    Field(ServerAddress)->clear();
    Field(RemotePort)->clear();

    PressSet();

    const auto client = ReadAsFrp(Board::ReadFile(clientPath));
    QCOMPARE(client["common/server_addr"], QByteArray());
    QCOMPARE(client["vnc/remote_port"], QByteArray());
    QCOMPARE(client["common/server_port"], QByteArray("7000"));
}

void VncTesterTest::valueSurvivesTheRoundTrip_data()
{
    QTest::addColumn<QString>("value");
    for (const char* value :
         {"plain",      "a;b",        "a#b",         " # b",  "50%",      "%41",
          "@home",      "@@",         "@Variant(x)", "a,b,c", " leading", "trailing ",
          "say \"hi\"", "\"quoted\"", "back\\slash", "end\\", "it's",     "'single'",
          "a=b",        "[vnc]",      "密码",        "密码1", "é1",       "x\ty"}) {
        QTest::newRow(value) << QString(value);
    }
}

void VncTesterTest::valueSurvivesTheRoundTrip()
{
    QFETCH(QString, value);
    Board::WriteFile(clientPath, clientFile);
    Rebuild();
    Field(Password)->setText(value);
    Field(ServerAddress)->setText(value);

    PressSet();
    Rebuild();

    QCOMPARE(Field(Password)->text(), value);
    QCOMPARE(Field(ServerAddress)->text(), value);
    QCOMPARE(Field(ServerPort)->text(), QString("7000"));
    QCOMPARE(Field(RemotePort)->text(), QString("6000"));
    QCOMPARE(QSettings(serverPath, QSettings::IniFormat).value("password").toString(), value);
    QCOMPARE(ReadAsFrp(Board::ReadFile(clientPath))["common/token"], QByteArray("a;b"));
}

void VncTesterTest::filesAreWrittenInOrderAndSynchronised()
{
    Board::PutTool("sync",
                   "cat /etc/vnclinuxfb.conf /etc/frpc.ini >/tmp/at-sync\n"
                   "[ ! /etc/vnclinuxfb.conf -nt /etc/frpc.ini ] || echo late >/tmp/at-sync");
    Field(Password)->setText("new");

    PressSet();

    const QByteArray atSync = Board::ReadFile("/tmp/at-sync");
    QCOMPARE(atSync, Board::ReadFile(serverPath) + Board::ReadFile(clientPath));
    QVERIFY(atSync.contains("password=new"));
}

void VncTesterTest::successIsTold_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("button");

    QTest::newRow("english") << "english"
                             << "Set success!"
                             << "OK";
    QTest::newRow("chinese") << "chinese"
                             << "设置成功!"
                             << "确认";
}

void VncTesterTest::successIsTold()
{
    QFETCH(QString, language);
    QFETCH(QString, text);
    QFETCH(QString, button);
    MoskSettings::GetInstance()->SetValue("Language", language);
    MoskTranslator::Reload();
    Rebuild();

    bool told = false;
    AtTheBox(QMessageBox::Ok, [&](const QMessageBox& box) {
        QCOMPARE(box.text(), text);
        QCOMPARE(box.standardButtons(), QMessageBox::StandardButtons(QMessageBox::Ok));
        QCOMPARE(box.button(QMessageBox::Ok)->text(), button);
        QVERIFY(box.parentWidget() == nullptr);
        QVERIFY(box.isModal());
        QVERIFY(box.styleSheet().contains("min-width:300 px;"));
        // By then everything is on the disk.
        QVERIFY(QFile::exists(clientPath));
        told = true;
    });
    QTest::mouseClick(InGrid<QPushButton>(m_page, Set, 0), Qt::LeftButton);
    QVERIFY(told);
}

void VncTesterTest::successIsToldWhateverBecameOfTheFiles_data()
{
    QTest::addColumn<QByteArray>("maker");
    QTest::newRow("folders") << QByteArray("mkdir /etc/vnclinuxfb.conf /etc/frpc.ini");
    QTest::newRow("pipes") << QByteArray("mkfifo /etc/vnclinuxfb.conf /etc/frpc.ini");
    QTest::newRow("no such folder")
        << QByteArray("ln -s /none/a /etc/vnclinuxfb.conf; ln -s /none/b /etc/frpc.ini");
    QTest::newRow("read-only files")
        << QByteArray("echo enable=0 >/etc/vnclinuxfb.conf; echo >/etc/frpc.ini;"
                      "chmod 444 /etc/vnclinuxfb.conf /etc/frpc.ini");
    QTest::newRow("read-only disk")
        << QByteArray("mkdir -p /mnt/ro; mount -t tmpfs none /mnt/ro; touch /mnt/ro/a /mnt/ro/b;"
                      "mount -o remount,ro /mnt/ro;"
                      "ln -s /mnt/ro/a /etc/vnclinuxfb.conf; ln -s /mnt/ro/b /etc/frpc.ini");
}

void VncTesterTest::successIsToldWhateverBecameOfTheFiles()
{
    QFETCH(QByteArray, maker);
    QCOMPARE(std::system(maker.constData()), 0);
    Rebuild();
    Field(Password)->setText("new");

    PressSet();

    QCOMPARE(Field(Password)->text(), QString("new"));
    umount("/mnt/ro");
}

void VncTesterTest::strangeFilesOpen_data()
{
    QTest::addColumn<QByteArray>("content");

    QByteArray binary;
    for (uint i = 0, bits = 7; i < 1024 * 1024; ++i) {
        bits = bits * 1664525 + 1013904223;
        binary += static_cast<char>(bits >> 24);
    }
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("1 MB of anything") << binary;
    QTest::newRow("1 MB in one line") << QByteArray(1024 * 1024, 'x');
    QTest::newRow("1 MB value") << "password=" + QByteArray(1024 * 1024, 'x');
    QTest::newRow("1 MB of zeros") << QByteArray(1024 * 1024, '\0');
    QTest::newRow("byte-order mark") << QByteArray("\xef\xbb\xbf");
    QTest::newRow("UTF-16") << QByteArray("\xff\xfe[\0c\0o\0m\0m\0o\0n\0]\0\n\0", 20);
    QTest::newRow("a type of Qt's own")
        << QByteArray("enable=@Variant(\\0\\0\\0)\npassword=@Size(1)");
}

void VncTesterTest::strangeFilesOpen()
{
    QFETCH(QByteArray, content);
    Board::WriteFile(serverPath, content);
    Board::WriteFile(clientPath, content);
    Rebuild();
    Field(Password)->setText("new");
    Field(RemotePort)->setText("6001");

    PressSet();
    Rebuild();

    QCOMPARE(Field(Password)->text(), QString("new"));
    QCOMPARE(Field(RemotePort)->text(), QString("6001"));
}

QTEST_MAIN(VncTesterTest)
#include "VncTesterTest.moc"
