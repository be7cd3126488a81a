#include "pages/VncTester.h"
#include "simulated-board/Board.h"
#include "tests/PageFixture.h"

#include <QCheckBox>
#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QPushButton>
#include <QScopeGuard>

#include <sys/mount.h>
#include <sys/stat.h>

namespace
{

const char* const serverPath = "/etc/vnclinuxfb.conf";
const char* const clientPath = "/etc/frpc.ini";

enum Row { Enable, ServerAddress, ServerPort, RemotePort, Security, Password, Set };

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

    void openingThePageMakesNoFiles();
    void fieldsShowWhatTheFilesHold();
    void boxesAreOnForTheirNumbers_data();
    void boxesAreOnForTheirNumbers();
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
    void strangePasswordStaysAsItIs_data();
    void strangePasswordStaysAsItIs();
    void setWritesWhatThePageShows();
    void emptyFieldIsWrittenEmpty();
    void filesAreWrittenInOrderAndSynchronised();

    void successIsTold_data();
    void successIsTold();
    void successIsToldWhateverBecameOfTheFiles_data();
    void successIsToldWhateverBecameOfTheFiles();

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

void VncTesterTest::openingThePageMakesNoFiles()
{
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

void VncTesterTest::boxesAreOnForTheirNumbers_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<bool>("authenticated");

    QTest::newRow("1") << true << false;
    QTest::newRow("2") << false << true;
    QTest::newRow("3") << false << true;
    for (const char* value : {"0", "-1", "-2", "", "true", "1x", "1,1", "4294967297"}) {
        QTest::newRow(value) << false << false;
    }
}

void VncTesterTest::boxesAreOnForTheirNumbers()
{
    QFETCH(bool, enabled);
    QFETCH(bool, authenticated);
    const QByteArray value = QTest::currentDataTag();
    Board::WriteFile(serverPath, "enable=" + value + "\nsecurity=" + value + '\n');
    Rebuild();

    QCOMPARE(Box(Enable)->isChecked(), enabled);
    QCOMPARE(Box(Security)->isChecked(), authenticated);
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

void VncTesterTest::strangePasswordStaysAsItIs_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("shown");

    QTest::newRow("spelling") << QByteArray("password = \"a \" b\\x63 ; why") << "a bc";
    QTest::newRow("control characters")
        << QByteArray("password=a\\nb\\tc\\x0;") << QString::fromLatin1("a\nb\tc\0;", 7);
    QTest::newRow("longer than a field is by default")
        << "password=" + QByteArray(40000, 'x') << QString(40000, 'x');
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

QTEST_MAIN(VncTesterTest)
#include "VncTesterTest.moc"
