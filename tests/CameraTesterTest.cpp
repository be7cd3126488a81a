#include "pages/CameraTester.h"
#include "simulated-board/Board.h"
#include "tests/OpenDescriptors.h"
#include "tests/PageFixture.h"

#include <QCameraInfo>
#include <QCameraViewfinder>
#include <QComboBox>

#include <memory>

namespace
{

const QByteArray twoCameras = "camera video0 #2060c0 Front camera\n"
                              "camera video1 #c06020 Rear camera\n";
const QColor front(0x20, 0x60, 0xc0);
const QColor rear(0xc0, 0x60, 0x20);

/// The cameras that were opened and closed, in order.
QStringList Uses()
{
    const QString path = "/run/board/received/cameras";
    return QFile::exists(path)
               ? QString::fromUtf8(Board::ReadFile(path)).split('\n', Qt::SkipEmptyParts)
               : QStringList();
}

/// Replaces the cameras while the program runs.
void CamerasAreNow(const QByteArray& lines)
{
    Board::WriteFile("/run/board/description", lines);
}

/// The row of the first camera that this machine's kernel simulates; -1 when there is none.
int KernelCamera()
{
    const QList<QCameraInfo> cameras = QCameraInfo::availableCameras();
    for (int i = 0; i < cameras.size(); ++i) {
        if (cameras[i].deviceName().startsWith("/dev/")) {
            return i;
        }
    }
    return -1;
}

} // namespace

class CameraTesterTest : public PageFixture<CameraTester>
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void selectorIsThatOfThePagesStart();
    void cameraIsOpenedByTheOperatorOnly();

    void openShowsThePictureOfTheChosenCamera_data();
    void openShowsThePictureOfTheChosenCamera();
    void camerasOfOneNameAreTwo();
    void openAgainRestartsThePicture();
    void openClosesTheOtherCameraFirst();
    void closeStopsThePicture();
    void closeWithoutACameraDoesNothing();
    void leavingThePageClosesTheCamera();

    void noCameraNothingToOpen();
    void choiceOutsideTheListOpensNothing();
    void cameraThatVanishesLeavesThePageUsable();
    void cameraThatCannotBeOpenedLeavesThePageUsable();
    void manyOpeningsLeaveNothingBehind();
    void buffersAreFreedUnlessTheBoardSaysOtherwise();
    void secondCameraMayBeOpenedBeforeTheFirstIsClosed();

    void cameraOfTheKernelShowsAPicture();

private:
    QComboBox* Selector() { return InGrid<QComboBox>(m_page.get(), 1, 0); }
    QCameraViewfinder* Viewfinder() { return InGrid<QCameraViewfinder>(m_page.get(), 0, 0); }
    QColor Picture();
};

void CameraTesterTest::initTestCase()
{
    qInfo("Cameras: those of the simulated board%s",
          KernelCamera() >= 0 ? ", and the kernel's" : "; the kernel here has none");
}

void CameraTesterTest::init()
{
    Board::Become("language english\n" + twoCameras);
    Speak("english");
    Rebuild();
}

void CameraTesterTest::cleanup()
{
    m_page.reset();
}

/// The colour in the middle of the viewfinder.
QColor CameraTesterTest::Picture()
{
    return Viewfinder()->grab().toImage().pixelColor(Viewfinder()->rect().center());
}

void CameraTesterTest::selectorIsThatOfThePagesStart()
{
    const int before = Selector()->count();
    CamerasAreNow("camera video2 #ffffff Third camera\n");

    Press(m_page.get(), "btnopen");
    QCOMPARE(Selector()->count(), before);

    Rebuild();
    QVERIFY(Selector()->findText("Third camera") >= 0);
    QCOMPARE(Selector()->findText("Front camera"), -1);
}

void CameraTesterTest::cameraIsOpenedByTheOperatorOnly()
{
    Selector()->setCurrentText("Rear camera");

    QCOMPARE(Uses(), QStringList());
    QCOMPARE(Picture(), QColor(Qt::black));
}

void CameraTesterTest::openShowsThePictureOfTheChosenCamera_data()
{
    QTest::addColumn<QString>("camera");
    QTest::addColumn<QColor>("colour");
    QTest::newRow("first") << "Front camera" << front;
    QTest::newRow("second") << "Rear camera" << rear;
}

void CameraTesterTest::openShowsThePictureOfTheChosenCamera()
{
    QFETCH(QString, camera);
    QFETCH(QColor, colour);
    Selector()->setCurrentText(camera);

    Press(m_page.get(), "btnopen");

    QTRY_COMPARE(Picture(), colour);
}

void CameraTesterTest::camerasOfOneNameAreTwo()
{
    CamerasAreNow("camera video0 #2060c0 Camera\ncamera video1 #c06020 Camera\n");
    Rebuild();
    Selector()->setCurrentIndex(Selector()->findText("Camera") + 1);

    Press(m_page.get(), "btnopen");

    QTRY_COMPARE(Picture(), rear);
}

void CameraTesterTest::openAgainRestartsThePicture()
{
    Selector()->setCurrentText("Front camera");
    Press(m_page.get(), "btnopen");
    QTRY_COMPARE(Picture(), front);

    Press(m_page.get(), "btnopen");

    QTRY_COMPARE(Picture(), front);
    QCOMPARE(Uses(), QStringList({"open video0", "close video0", "open video0"}));
}

void CameraTesterTest::openClosesTheOtherCameraFirst()
{
    Selector()->setCurrentText("Front camera");
    Press(m_page.get(), "btnopen");
    Selector()->setCurrentText("Rear camera");
    QTRY_COMPARE(Picture(), front);

    Press(m_page.get(), "btnopen");

    QTRY_COMPARE(Picture(), rear);
    QCOMPARE(Uses(), QStringList({"open video0", "close video0", "open video1"}));
}

void CameraTesterTest::closeStopsThePicture()
{
    Selector()->setCurrentText("Front camera");
    Press(m_page.get(), "btnopen");
    QTRY_COMPARE(Picture(), front);

    Press(m_page.get(), "btnclose");

    QCOMPARE(Uses(), QStringList({"open video0", "close video0"}));
    QTRY_COMPARE(Picture(), QColor(Qt::black));
}

void CameraTesterTest::closeWithoutACameraDoesNothing()
{
    Press(m_page.get(), "btnclose");
    Press(m_page.get(), "btnclose");

    QCOMPARE(Uses(), QStringList());
}

void CameraTesterTest::leavingThePageClosesTheCamera()
{
    Selector()->setCurrentText("Rear camera");
    Press(m_page.get(), "btnopen");
    QTRY_COMPARE(Picture(), rear);

    m_page.reset();

    QCOMPARE(Uses(), QStringList({"open video1", "close video1"}));
}

void CameraTesterTest::noCameraNothingToOpen()
{
    CamerasAreNow("");
    if (KernelCamera() >= 0) {
        QSKIP("The kernel here has cameras");
    }
    Rebuild();
    QCOMPARE(Selector()->count(), 0);
    QCOMPARE(Selector()->currentIndex(), -1);

    Press(m_page.get(), "btnopen");
    Press(m_page.get(), "btnclose");

    QCOMPARE(Uses(), QStringList());
}

void CameraTesterTest::choiceOutsideTheListOpensNothing()
{
    Selector()->setCurrentText("Front camera");
    Press(m_page.get(), "btnopen");

    Selector()->setCurrentIndex(-1);
    Press(m_page.get(), "btnopen");
    Selector()->addItem("No camera");
    Selector()->setCurrentText("No camera");
    Press(m_page.get(), "btnopen");

    QTRY_COMPARE(Picture(), front);
    QCOMPARE(Uses(), QStringList("open video0"));
}

void CameraTesterTest::cameraThatVanishesLeavesThePageUsable()
{
    Selector()->setCurrentText("Front camera");
    Press(m_page.get(), "btnopen");
    QTRY_COMPARE(Picture(), front);

    CamerasAreNow("camera video1 #c06020 Rear camera\n");
    QTRY_COMPARE(Uses().last(), QString("close video0"));

    Press(m_page.get(), "btnopen");
    Press(m_page.get(), "btnclose");
    QCOMPARE(Uses(), QStringList({"open video0", "close video0"}));
    Press(m_page.get(), "btnopen");
    Selector()->setCurrentText("Rear camera");
    Press(m_page.get(), "btnopen");
    QTRY_COMPARE(Picture(), rear);

    CamerasAreNow("");
    QTRY_COMPARE(Uses().last(), QString("close video1"));
    m_page.reset();
}

void CameraTesterTest::cameraThatCannotBeOpenedLeavesThePageUsable()
{
    Board::Become("camera video0 busy Front camera\ncamera video1 #c06020 Rear camera\n");
    Rebuild();
    Selector()->setCurrentText("Front camera");
    Press(m_page.get(), "btnopen");
    QCOMPARE(Uses(), QStringList());
    QCOMPARE(Picture(), QColor(Qt::black));

    Selector()->setCurrentText("Rear camera");
    Press(m_page.get(), "btnopen");

    QTRY_COMPARE(Picture(), rear);
    QCOMPARE(Uses(), QStringList("open video1"));
}

void CameraTesterTest::manyOpeningsLeaveNothingBehind()
{
    Selector()->setCurrentText("Front camera");
    Press(m_page.get(), "btnopen");
    QTRY_COMPARE(Picture(), front);
    const int widgets = QApplication::allWidgets().size();
    const int objects = m_page->findChildren<QObject*>().size();
    const int descriptors = OpenDescriptors();

    for (int i = 0; i < 100; ++i) {
        Press(m_page.get(), "btnopen");
    }
    QTRY_COMPARE(Picture(), front);

    QCOMPARE(QApplication::allWidgets().size(), widgets);
    QCOMPARE(m_page->findChildren<QObject*>().size(), objects);
    QCOMPARE(OpenDescriptors(), descriptors);
    Press(m_page.get(), "btnclose");
    QCOMPARE(Uses().count("open video0"), 101);
    QCOMPARE(Uses().count("close video0"), 101);
}

// The page does not do this, but Qt allows it.
// GStreamer reads the variable when it stops one of the kernel's cameras.
void CameraTesterTest::buffersAreFreedUnlessTheBoardSaysOtherwise()
{
    const char* const variable = "GST_V4L2_FORCE_DRAIN";
    QCOMPARE(qgetenv(variable), QByteArray("1"));

    qputenv(variable, "0");
    Rebuild();
    QCOMPARE(qgetenv(variable), QByteArray("0"));
    qunsetenv(variable);
}

void CameraTesterTest::secondCameraMayBeOpenedBeforeTheFirstIsClosed()
{
    const auto open = [this](const QByteArray& device) {
        auto camera = std::make_unique<QCamera>(device);
        camera->setViewfinder(Viewfinder());
        camera->start();
        return camera;
    };
    std::unique_ptr<QCamera> camera = open("video0");
    QTRY_COMPARE(Picture(), front);

    camera = open("video1");

    QTRY_COMPARE(Picture(), rear);
    QCOMPARE(Uses(), QStringList({"open video0", "open video1", "close video0"}));
    camera.reset();
    QCOMPARE(Uses().last(), QString("close video1"));
}

void CameraTesterTest::cameraOfTheKernelShowsAPicture()
{
    if (KernelCamera() < 0) {
        QSKIP("The kernel here has no vivid or v4l2loopback camera");
    }
    Selector()->setCurrentIndex(KernelCamera());

    Press(m_page.get(), "btnopen");

    QTRY_VERIFY(Picture() != QColor(Qt::black));
    Press(m_page.get(), "btnclose");
}

QTEST_MAIN(CameraTesterTest)
#include "CameraTesterTest.moc"
