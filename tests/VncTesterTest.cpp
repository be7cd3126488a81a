#include "pages/VncTester.h"
#include "simulated-board/Board.h"
#include "tests/PageFixture.h"

#include <QCheckBox>
#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QScopeGuard>
#include <QSettings>

#include <sys/mount.h>
#include <sys/stat.h>

namespace
{

const char* const serverPath = "/etc/vnclinuxfb.conf";
const char* const clientPath = "/etc/frpc.ini";

enum Row { Enable, ServerAddress, ServerPort, RemotePort, Security, Password, Set, Filler };

// Such a file as people write it by hand, with lines that a rewrite would spoil.
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

/// The content of a file. If it is missing, the running test fails.
QByteArray Content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "no file " + path.toLatin1();
}

} // namespace

class VncTesterTest : public PageFixture<ToolVncTest>
{
    Q_OBJECT

private slots:
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
    void anyTextInAPortIsShown();
    void portFieldsTakeOnlyPorts_data();
    void portFieldsTakeOnlyPorts();
    void portMayBeginWithZerosWhileItIsEdited();
    void editMakesAPortOfAnyTextOrClearsIt_data();
    void editMakesAPortOfAnyTextOrClearsIt();

    void setCreatesTheFiles();
    void setWritesTheBoxesAsNumbers_data();
    void setWritesTheBoxesAsNumbers();
    void setChangesNoOtherLine();
    void strangeLinesPlayNoPart_data();
    void strangeLinesPlayNoPart();
    void strangePasswordStaysAsItIs_data();
    void strangePasswordStaysAsItIs();
    void setWritesWhatThePageShows();
    void emptyFieldIsWrittenEmpty();
    void valueSurvivesTheRoundTrip();
    void filesAreWrittenInOrderAndSynchronised();

    void successIsTold_data();
    void successIsTold();
    void successIsToldWhateverBecameOfTheFiles_data();
    void successIsToldWhateverBecameOfTheFiles();

    void strangeFilesOpen_data();
    void strangeFilesOpen();

private:
    QLineEdit* Field(Row row) { return InGrid<QLineEdit>(m_page.get(), row, 1); }
    QCheckBox* Box(Row row) { return InGrid<QCheckBox>(m_page.get(), row, 0); }
    void PressSet();
    void CompareWithTheFiles();
};

void VncTesterTest::init()
{
    Board::Become("");
    Speak("english");
    Rebuild();
}

void VncTesterTest::cleanup()
{
    m_page.reset();
    Board::RemoveTools();
    for (const char* path : {serverPath, clientPath}) {
        QFileInfo(path).isDir() && !QFileInfo(path).isSymLink() ? QDir(path).removeRecursively()
                                                                : QFile::remove(path);
    }
}

/// Presses Set and the box's button.
void VncTesterTest::PressSet()
{
    bool told = false;
    AtTheBox(QMessageBox::Ok, [&told](const QMessageBox& box) {
        QCOMPARE(box.text(), Text("Label_1010006"));
        told = true;
    });
    QTest::mouseClick(InGrid<QPushButton>(m_page.get(), Set, 0), Qt::LeftButton);
    QVERIFY(told);
}

/// Compares the page with a server that has the password "secret", all on, and with `clientFile`.
void VncTesterTest::CompareWithTheFiles()
{
    QVERIFY(Box(Enable)->isChecked());
    QVERIFY(Box(Security)->isChecked());
    QCOMPARE(Field(Password)->text(), QString("secret"));
    QCOMPARE(Field(ServerAddress)->text(), QString("203.0.113.7"));
    QCOMPARE(Field(ServerPort)->text(), QString("7000"));
    QCOMPARE(Field(RemotePort)->text(), QString("6000"));
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
    Speak(language);
    Rebuild();

    auto* titleWidget = InGrid<QWidget>(m_page.get(), row, 0);
    QVERIFY(titleWidget != nullptr);
    QCOMPARE(titleWidget->property("text").toString(), title);
    if (row == Set) {
        QVERIFY(InGrid<QPushButton>(m_page.get(), row, 0) != nullptr);
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
    QVERIFY(InGrid<QWidget>(m_page.get(), Enable, 2) != nullptr);
    QVERIFY(InGrid<QWidget>(m_page.get(), Filler, 2) != nullptr);
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

    CompareWithTheFiles();
}

void VncTesterTest::enableIsOnForOneAlone_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("on");

    for (const char* content : {"enable=1", "[General]\nenable=1", "enable=\"1\"", "enable =  1 ",
                                "enable=1 ; on", "security=1\r\nenable=1\r\n"}) {
        QTest::newRow(QByteArray(content).simplified()) << QByteArray(content) << true;
    }
    for (const char* content :
         {"enable=0", "enable=2", "enable=-1", "enable=", "enable=true", "enable=1x",
          "enable=4294967297", "enable=1,1", "[vnc]\nenable=1", "security=1"}) {
        QTest::newRow(QByteArray(content).simplified()) << QByteArray(content) << false;
    }
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

    for (const char* value : {"2", "3"}) {
        QTest::newRow(value) << QByteArray(value) << true;
    }
    for (const char* value : {"0", "1", "-2", "vnc", "99999999999999999999", ""}) {
        QTest::newRow(value) << QByteArray(value) << false;
    }
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

void VncTesterTest::anyTextInAPortIsShown()
{
    for (const char* port : {"{{ .Envs.PORT }}", "70000", "99999999999999999999", "-1"}) {
        Board::WriteFile(clientPath, "[common]\nserver_port=  " + QByteArray(port) + " \n");
        Rebuild();
        QCOMPARE(Field(ServerPort)->text(), QString(port));
    }
}

void VncTesterTest::portFieldsTakeOnlyPorts_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("taken");

    QTest::addColumn<QString>("pasted");

    const auto add = [](const char* typed, const char* taken, const char* pasted) {
        QTest::newRow(typed) << QString(typed) << QString(taken) << QString(pasted);
    };
    add("65535", "65535", "65535");
    add("0", "0", "0");
    add("007", "007", "007");
    add("65536", "6553", "");
    add("99999", "9999", "");
    add("655350", "65535", "");
    add("000080", "00008", "");
    add("a7b0c", "70", "");
    add("+5", "5", "");
    add("-7", "7", "");
    add("7,000", "7000", "");
    add(" 7.0", "70", "");
    add("٧٠", "", "");
    add("٧٬٠٠٠", "", "");
    add("７０", "", "");
}

void VncTesterTest::portFieldsTakeOnlyPorts()
{
    QFETCH(QString, typed);
    QFETCH(QString, taken);
    QFETCH(QString, pasted);
    const QLocale before;
    const auto goBack = qScopeGuard([&before] { QLocale::setDefault(before); });
    // With digits and signs of its own.
    QLocale::setDefault(QLocale("ar_EG"));
    Rebuild();
    for (const Row row : {ServerPort, RemotePort}) {
        for (const QChar character : typed) {
            QTest::sendKeyEvent(QTest::Click, Field(row), Qt::Key(character.unicode()), character,
                                Qt::NoModifier);
        }
        QCOMPARE(Field(row)->text(), taken);

        Field(row)->clear();
        QApplication::clipboard()->setText(typed);
        Field(row)->paste();
        QCOMPARE(Field(row)->text(), pasted);
    }
}

void VncTesterTest::portMayBeginWithZerosWhileItIsEdited()
{
    Board::WriteFile(clientPath, clientFile);
    Rebuild();

    QTest::keyClick(Field(ServerPort), Qt::Key_Home);
    QTest::keyClick(Field(ServerPort), Qt::Key_Delete);
    QCOMPARE(Field(ServerPort)->text(), QString("000"));
    QTest::keyClick(Field(ServerPort), '8');
    QCOMPARE(Field(ServerPort)->text(), QString("8000"));
}

void VncTesterTest::editMakesAPortOfAnyTextOrClearsIt_data()
{
    QTest::addColumn<QByteArray>("port");
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("left");

    const auto add = [](const char* port, int key, const char* left) {
        QTest::addRow("%s and key %d", port, key) << QByteArray(port) << key << QString(left);
    };
    add("{{ .Envs.PORT }}", 'x', "");
    add("{{ .Envs.PORT }}", '7', "");
    add("{{ .Envs.PORT }}", Qt::Key_Backspace, "");
    add("70000", '0', "");
    add("70000", Qt::Key_Backspace, "7000");
    add("7000x", Qt::Key_Backspace, "7000");
}

void VncTesterTest::editMakesAPortOfAnyTextOrClearsIt()
{
    QFETCH(QByteArray, port);
    QFETCH(int, key);
    QFETCH(QString, left);
    const QByteArray client = QByteArray(clientFile).replace("7000", port);
    Board::WriteFile(clientPath, client);
    Rebuild();
    PressSet();
    QCOMPARE(Content(clientPath), client);

    if (key < 0x80) {
        QTest::keyClick(Field(ServerPort), static_cast<char>(key));
    } else {
        QTest::keyClick(Field(ServerPort), static_cast<Qt::Key>(key));
    }

    QCOMPARE(Field(ServerPort)->text(), left);
    PressSet();
    QCOMPARE(Content(clientPath), QByteArray(clientFile).replace("7000", left.toLatin1()));
}

void VncTesterTest::setCreatesTheFiles()
{
    PressSet();

    QCOMPARE(Content(serverPath), QByteArray("[General]\nenable=0\nsecurity=1\npassword=\n"));
    QCOMPARE(Content(clientPath),
             QByteArray("[common]\nserver_addr=\nserver_port=\n\n[vnc]\nremote_port=\n"));
    QCOMPARE(QFile::permissions(serverPath) & (QFile::WriteGroup | QFile::WriteOther),
             QFile::Permissions());
}

void VncTesterTest::setWritesTheBoxesAsNumbers_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");

    const auto add = [](const char* name, const char* before, const char* after) {
        QTest::newRow(name) << QByteArray(before) << QByteArray(after);
    };
    add("authentication 3", "enable=1\nsecurity=3\npassword=\n",
        "enable=1\nsecurity=2\npassword=\n");
    add("authentication 0", "enable=1\nsecurity=0\npassword=\n",
        "enable=1\nsecurity=1\npassword=\n");
    add("enable 2", "enable=2\nsecurity=2\npassword=\n", "enable=0\nsecurity=2\npassword=\n");
    add("words", "enable=yes\nsecurity=on\npassword=\n", "enable=0\nsecurity=1\npassword=\n");
    add("missing keys", "enable=1\n", "enable=1\nsecurity=1\npassword=\n");
}

void VncTesterTest::setWritesTheBoxesAsNumbers()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    Board::WriteFile(serverPath, before);
    Rebuild();

    PressSet();

    QCOMPARE(Content(serverPath), after);
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

    QCOMPARE(Content(serverPath),
             QByteArray("# screen\nenable=1\n\npassword=new\nsecurity=2\n[other]\nenable=7\n"));
    QByteArray expected = clientFile;
    expected.replace("203.0.113.7", "relay.example.com");
    expected.replace("= 7000", "= 7001");
    expected.replace("= 6000", "= 6001");
    QCOMPARE(Content(clientPath), expected);
}

// Lines that QSettings joins with the next lines, or does not see.
void VncTesterTest::strangeLinesPlayNoPart_data()
{
    QTest::addColumn<QByteArray>("line");

    for (const char* line : {"# 7\" panel", "motto = a\"b", "path = C:\\", "# C:\\", "users = a, b",
                             "\xef\xbb\xbf# 7\" panel", "\xef\xbb\xbfmotto=a\"b"}) {
        QTest::newRow(line) << QByteArray(line);
    }
    QTest::newRow("zero byte and quote") << QByteArray("\0\"", 2);
    QTest::newRow("zero byte before a key") << QByteArray("\0enable=7", 9);
}

void VncTesterTest::strangeLinesPlayNoPart()
{
    QFETCH(QByteArray, line);
    const QByteArray server = line + "\nenable=1\nsecurity=2\npassword=secret\n";
    const QByteArray client = line + "\n" + clientFile;
    Board::WriteFile(serverPath, server);
    Board::WriteFile(clientPath, client);
    Rebuild();

    CompareWithTheFiles();

    PressSet();
    QCOMPARE(Content(serverPath), server);
    QCOMPARE(Content(clientPath), client);

    Field(RemotePort)->setText("6001");
    PressSet();
    QCOMPARE(Content(serverPath), server);
    QCOMPARE(Content(clientPath), QByteArray(client).replace("= 6000", "= 6001"));
}

void VncTesterTest::strangePasswordStaysAsItIs_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("shown");

    const auto add = [](const char* name, const QByteArray& line, const QString& shown) {
        QTest::newRow(name) << line << shown;
    };
    add("spelling", "password = \"a \" b\\x63 ; why", "a bc");
    add("comma", "password=a,b", "a,b");
    add("semicolon", "password=a;b", "a;b");
    add("open quote", "password=a\"b", "a\"b");
    add("back-slash at the end", "password=a\\", "a\\");
    add("byte-order mark", "\xef\xbb\xbfpassword=a", "a");
    add("form feed", "\fpassword=a", "a");
    add("half of a character", "password=\xe5\xaf", "\u00e5\u00af");
    add("type of Qt's own", "password=@Size(1 2)", "@Size(1 2)");
    add("control characters", "password=a\\nb\\tc\\x0;", QString::fromLatin1("a\nb\tc\0;", 7));
    add("longer than a field is by default", "password=" + QByteArray(40000, 'x'),
        QString(40000, 'x'));
}

void VncTesterTest::strangePasswordStaysAsItIs()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, shown);
    const QByteArray server = line + "\nenable=0\nsecurity=1\n";
    Board::WriteFile(serverPath, server);
    Rebuild();
    QCOMPARE(Field(Password)->text(), shown);

    PressSet();
    QCOMPARE(Content(serverPath), server);

    QTest::mouseClick(Box(Enable), Qt::LeftButton, {}, QPoint(10, 15));
    PressSet();
    QCOMPARE(Content(serverPath), QByteArray(server).replace("enable=0", "enable=1"));
}

void VncTesterTest::setWritesWhatThePageShows()
{
    const QByteArray server = "enable=1\nsecurity=2\npassword=secret\n";
    Board::WriteFile(serverPath, server);
    Board::WriteFile(clientPath, clientFile);
    Rebuild();
    // Another program changes what the page shows, and a line that is none of the page's.
    Board::WriteFile(serverPath, "enable=0\nsecurity=1\npassword=other\n");
    Board::WriteFile(clientPath, QByteArray(clientFile)
                                     .replace("203.0.113.7", "198.51.100.7")
                                     .replace("= 7000", "= 7077")
                                     .replace("= 6000", "= 6066")
                                     .replace("= 5900", "= 5901"));

    PressSet();

    CompareWithTheFiles();
    QCOMPARE(Content(serverPath), server);
    QCOMPARE(Content(clientPath), QByteArray(clientFile).replace("= 5900", "= 5901"));
}

void VncTesterTest::emptyFieldIsWrittenEmpty()
{
    Board::WriteFile(clientPath, clientFile);
    Rebuild();
    Field(ServerAddress)->clear();
    Field(RemotePort)->clear();

    PressSet();

    QByteArray expected = clientFile;
    expected.replace("= 203.0.113.7", "= ").replace("= 6000", "= ");
    QCOMPARE(Content(clientPath), expected);
}

void VncTesterTest::valueSurvivesTheRoundTrip()
{
    Board::WriteFile(clientPath, clientFile);
    Rebuild();
    for (const char* value : {"a;b", "a,b", "say \"hi\"", "end\\", " blanks ", "密码1", "@x)"}) {
        Field(Password)->setText(value);
        Field(ServerAddress)->setText(value);

        PressSet();
        Rebuild();

        QCOMPARE(Field(Password)->text(), QString(value));
        QCOMPARE(Field(ServerAddress)->text(), QString(value));
        QCOMPARE(Field(RemotePort)->text(), QString("6000"));
        QCOMPARE(QSettings(serverPath, QSettings::IniFormat).value("password"), QVariant(value));
    }
}

void VncTesterTest::filesAreWrittenInOrderAndSynchronised()
{
    Board::PutTool("sync",
                   "cat /etc/vnclinuxfb.conf /etc/frpc.ini >/tmp/at-sync\n"
                   "[ ! /etc/vnclinuxfb.conf -nt /etc/frpc.ini ] || echo late >/tmp/at-sync");
    Field(Password)->setText("new");

    PressSet();

    const QByteArray atSync = Content("/tmp/at-sync");
    QCOMPARE(atSync, Content(serverPath) + Content(clientPath));
    QVERIFY(atSync.contains("password=new"));
}

void VncTesterTest::successIsTold_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("button");

    const auto add = [](const char* language, const char* text, const char* button) {
        QTest::newRow(language) << QString(language) << QString(text) << QString(button);
    };
    add("english", "Set success!", "OK");
    add("chinese", "设置成功!", "确认");
}

void VncTesterTest::successIsTold()
{
    QFETCH(QString, language);
    QFETCH(QString, text);
    QFETCH(QString, button);
    Speak(language);
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
    QTest::mouseClick(InGrid<QPushButton>(m_page.get(), Set, 0), Qt::LeftButton);
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
    QTest::newRow("1 MB value") << "password=" + QByteArray(1024 * 1024, 'x');
    for (const char* text : {"key_of_another = value\n", "x", "\n", "\"", "[", "\\", "="}) {
        QTest::newRow(QByteArray(text).simplified()) << QByteArray(text).repeated(100000);
    }
    QTest::newRow("1 MB of zeros") << QByteArray(1024 * 1024, '\0');
    QTest::newRow("UTF-16") << QByteArray("\xff\xfe[\0c\0o\0m\0m\0o\0n\0]\0\n\0", 20);
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
    QVERIFY(Content(clientPath).startsWith(content));
}

QTEST_MAIN(VncTesterTest)
#include "VncTesterTest.moc"
