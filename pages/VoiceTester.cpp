#include "pages/VoiceTester.h"

#include "frame/MoskTranslator.h"
#include "instruments/Shell.h"
#include "instruments/Title.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QStyleOptionComboBox>
#include <QStylePainter>
#include <QStyledItemDelegate>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace
{

/// Set by the first play and kept to the program's end: a run of the program plays one sound.
bool m_isPlaying = false;

/// Whether the character means nothing to the shell, wherever it stands in a word.
bool IsOrdinary(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') ||
           (character != '\0' && std::strchr("/._-+,:@%", character) != nullptr);
}

/// The name in quotes that the shell takes as they are, cut so that it has `limit` bytes at most
/// with its quotes: a name must never lose the quote that closes it.
QByteArray Quoted(const QByteArray& name, int limit)
{
    QByteArray quoted = "'";
    for (const char character : name) {
        const QByteArray piece = character == '\'' ? QByteArray("'\\''") : QByteArray(1, character);
        if (quoted.size() + piece.size() + 1 > limit) {
            break;
        }
        quoted += piece;
    }
    return quoted + "'";
}

QString WithoutLineEnd(const QString& item)
{
    return item.endsWith('\n') ? item.chopped(1) : item;
}

/// The files in the open list, a line each: an item's own line end would make it two.
class FileDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant& value, const QLocale& /*locale*/) const override
    {
        return WithoutLineEnd(value.toString());
    }
};

/// The chosen file, on one line too; of a long path both ends are shown.
class FileSelector : public QComboBox
{
public:
    explicit FileSelector(QWidget* parent) : QComboBox(parent)
    {
        setItemDelegate(new FileDelegate(this));
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QStylePainter painter(this);
        QStyleOptionComboBox option;
        initStyleOption(&option);
        const QRect place = style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                    QStyle::SC_ComboBoxEditField, this);
        option.currentText = option.fontMetrics.elidedText(WithoutLineEnd(option.currentText),
                                                           Qt::ElideMiddle, place.width());
        painter.drawComplexControl(QStyle::CC_ComboBox, option);
        painter.drawControl(QStyle::CE_ComboBoxLabel, option);
    }
};

} // namespace

QByteArray PlayCommand(const QString& item)
{
    QByteArray name = WithoutLineEnd(item).toUtf8();
    char command[100] = {};
    if (!std::all_of(name.begin(), name.end(), IsOrdinary)) {
        name = Quoted(name, sizeof command - sizeof "tinyplay  &");
    }
    std::snprintf(command, sizeof command, "tinyplay %s &", name.constData());
    return command;
}

VoiceTester::VoiceTester(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(30, 20, 30, 20);
    layout->setSpacing(20);

    const QSize size(100, 30);
    layout->addWidget(NewTitle("Label_1000800", size, this), 0, 0);
    m_files = new FileSelector(this);
    m_files->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    layout->addWidget(m_files, 0, 1);
    auto* scan = new QPushButton(MoskTranslator::Translate("Label_1000801"), this);
    scan->setFixedSize(size);
    layout->addWidget(scan, 0, 2);

    layout->addWidget(NewTitle("Label_1000802", size, this), 1, 0);
    auto* play = new QPushButton(MoskTranslator::Translate("Label_1000803"), this);
    play->setObjectName("btnPlay");
    play->setFixedSize(size);
    layout->addWidget(play, 1, 2);

    auto* filler = new QWidget(this);
    filler->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    layout->addWidget(filler, 2, 0, 1, 3);

    m_timer = new QTimer(this);

    connect(scan, &QPushButton::clicked, this, &VoiceTester::OnBtnScanClicked);
    connect(play, &QPushButton::clicked, this, &VoiceTester::OnBtnPlayClicked);
    connect(m_timer, &QTimer::timeout, this, &VoiceTester::OnTimeout);
}

VoiceTester::~VoiceTester()
{
    RunShell("killall tinyplay");
}

void VoiceTester::OnBtnScanClicked(bool /*checked*/)
{
    m_files->clear();
    QProcess find;
    find.start("find", {"/mnt/", "-name", "*.wav"}, QIODevice::ReadWrite);
    do {
        find.waitForReadyRead(1000);
        while (find.canReadLine()) {
            m_files->addItem(QString::fromLocal8Bit(find.readLine().constData()));
        }
    } while (find.state() != QProcess::NotRunning);
}

void VoiceTester::OnBtnPlayClicked(bool /*checked*/)
{
    const QString file = m_files->currentText();
    if (m_isPlaying || file.isEmpty()) {
        return;
    }
    RunShell(PlayCommand(file));
    m_isPlaying = true;
}

void VoiceTester::OnTimeout()
{
    if (m_status != nullptr) {
        m_status->setText(
            MoskTranslator::Translate(m_isRecording ? "Label_1000809" : "Label_1000811"));
    }
    m_isRecording = false;
    m_timer->stop();
}
