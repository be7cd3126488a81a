#include "simulated-board/tour/Tour.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <QThread>

namespace
{

/// How long a call waits for the program's answer, in ms: longer than its longest check.
const int answerMs = 60000;

/// The program lists the languages in this order.
const char* const languages[] = {"chinese", "english"};

const char* const stopped = "the tour was stopped";

/// Thrown when the tour cannot go on.
struct Ended {
    QString reason;
};

void Print(const QString& line)
{
    QTextStream(stdout) << Visible(line) << '\n';
}

/// Reads the texts of a language file: lines KEY=TEXT after a byte-order mark.
QMap<QString, QString> ReadLabels(const QString& language)
{
    QMap<QString, QString> labels;
    QFile file(QString(":/language/%1.ini").arg(language));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return labels;
    }
    QTextStream stream(&file);
    while (!stream.atEnd()) {
        const QString line = stream.readLine();
        labels[line.section('=', 0, 0)] = line.section('=', 1);
    }
    return labels;
}

QString KernelOfTheBoard()
{
    QFile file("/proc/version");
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

} // namespace

Tour::Tour(const BoardDescription& board, const QString& folder,
           const std::function<bool()>& isStopped)
    : m_board(board), m_folder(folder), m_isStopped(isStopped)
{
    m_report.kernel = KernelOfTheBoard();
    m_program.SetLimit(answerMs);
    m_program.SetStop(isStopped);
}

void Tour::Introduce(const QString& board, const QString& program)
{
    m_report.board = m_board.title.isEmpty() ? board : m_board.title + " (" + board + ')';
    m_report.program = program;
}

bool Tour::IsSimulated()
{
    return QFileInfo("/run/host/etc").isDir();
}

bool Tour::Walk(const QMap<QString, Visit>& visits, const QStringList& chosen)
{
    m_walked.start();
    m_sinceLastCheck.start();
    // If nothing ends this report, not even the tour itself, it says so.
    if (!WriteReport()) {
        return false;
    }
    QString before;
    try {
        if (!m_program.Connect(answerMs)) {
            throw Ended{m_isStopped() ? QString(stopped) : m_program.Error()};
        }
        CloseBoxes();
        OpenHome();
        before = ChosenLanguage();
        VisitPages("english", visits, chosen);
        VisitPages("chinese", visits, chosen);
        m_report.incomplete.clear();
    } catch (const Ended& ended) {
        m_report.incomplete = ended.reason;
        Print("Incomplete: " + ended.reason);
    }
    PutLanguageBack(before);
    if (!WriteReport()) {
        return false;
    }
    Print(QString("%1 checks, %2 wrong, %3 left out, %4 s")
              .arg(m_report.checks.size())
              .arg(m_report.Count(Report::Verdict::Wrong))
              .arg(m_report.Count(Report::Verdict::LeftOut))
              .arg(static_cast<double>(m_report.ms) / 1000, 0, 'f', 1));
    return m_report.IsGood();
}

void Tour::VisitPages(const QString& language, const QMap<QString, Visit>& visits,
                      const QStringList& chosen)
{
    Print(QString("In %1:").arg(language));
    ChooseLanguage(language);
    const QJsonArray pages = m_program.Pages();
    QStringList names;
    for (const QJsonValue& page : pages) {
        const QString name = page["name"].toString();
        names.append(name);
        if (visits.contains(name) && (chosen.isEmpty() || chosen.contains(name))) {
            Open(name, page["tab"].toInt());
            visits[name](*this);
            TakePicture(name);
            WriteReport();
        }
    }
    m_page = "program";
    names.sort();
    const QStringList visited = visits.keys();
    Check("pages", names.join(", "), visited.join(", "));
}

void Tour::ChooseLanguage(const QString& language)
{
    m_language = language;
    m_labels = ReadLabels(language);
    m_page = "home";
    CloseBoxes();
    const bool isChosen =
        OpenHome() && m_program.Choose("bodyWidget QComboBox", language == languages[0] ? 0 : 1) &&
        m_program.Idle();
    if (!isChosen) {
        Check("choice", m_program.Error(), language);
    }
    CheckText("language", "bodyWidget QLabel[0]", Label("Label_1000210"));
}

/// Opens the home page. Its tab does nothing if it is chosen already, which it may be while a page
/// without a tab is open.
bool Tour::OpenHome()
{
    return m_program.ClickTab("menuTab", 0) && m_program.OpenPage("home");
}

QString Tour::ChosenLanguage()
{
    const int item = m_program.Property("bodyWidget QComboBox", "currentIndex").toInt();
    return languages[item == 0 ? 0 : 1];
}

void Tour::PutLanguageBack(const QString& language)
{
    // A tour that was stopped still puts back what it has changed.
    m_program.SetStop({});
    m_isStopped = [] { return false; };
    try {
        if (!language.isEmpty() && m_program.IsThere()) {
            ChooseLanguage(language);
        }
    } catch (const Ended& ended) {
        m_report.incomplete = ended.reason;
    }
}

/// Opens a page by its tab in the menu, or by its name if it has no tab.
void Tour::Open(const QString& page, int tab)
{
    m_page = page;
    CloseBoxes();
    if (tab >= 0) {
        m_program.ClickTab("menuTab", tab);
    } else {
        m_program.OpenPage(page);
    }
    m_program.Idle();
}

/// Closes the boxes that a check has left open which went wrong.
void Tour::CloseBoxes()
{
    for (int i = 0; i < 3 && m_program.Count("QDialog") > 0; ++i) {
        if (!m_program.PressBoxButton("No") && !m_program.PressBoxButton("Ok")) {
            m_program.Click("toolTouchTest QPushButton[40]");
        }
        m_program.Idle();
    }
}

QString Tour::Label(const QString& key) const
{
    return m_labels.value(key, key);
}

void Tour::Check(const QString& check, const QString& shown, const QString& expected,
                 const QString& note)
{
    Report::Check result;
    result.shown = shown;
    result.expected = expected;
    result.note = note;
    QString verdict = "ok";
    if (shown != expected) {
        result.verdict = Report::Verdict::Wrong;
        verdict = QString("WRONG, expected \"%1\"").arg(expected);
        if (!m_program.Error().isEmpty()) {
            verdict += ": " + m_program.Error();
            result.note = m_program.Error();
        }
    }
    Print(QStringList{m_page, check, QString(shown).replace('\n', ' '), verdict}.join(" | "));
    Add(check, result);
    if (m_isStopped()) {
        throw Ended{stopped};
    }
    if (!m_program.IsThere()) {
        throw Ended{m_program.Error()};
    }
}

void Tour::LeaveOut(const QString& check, const QString& reason)
{
    Report::Check result;
    result.verdict = Report::Verdict::LeftOut;
    result.note = reason;
    Print(QStringList{m_page, check, "", "left out: " + reason}.join(" | "));
    Add(check, result);
}

void Tour::Add(const QString& check, Report::Check result)
{
    result.language = m_language;
    result.page = m_page;
    result.name = check;
    result.ms = m_sinceLastCheck.restart();
    m_report.checks.append(result);
}

bool Tour::WriteReport()
{
    QString error;
    m_report.ms = m_walked.elapsed();
    const bool isWritten = m_report.Write(m_folder, &error);
    if (!isWritten) {
        Print(error);
    }
    return isWritten;
}

void Tour::CheckText(const QString& check, const QString& widget, const QString& expected,
                     const QString& note)
{
    Check(check, m_program.Text(widget), expected, note);
}

bool Tour::WaitFor(const std::function<bool()>& isDone)
{
    const QDeadlineTimer limit(m_patience);
    while (!isDone()) {
        if (limit.hasExpired() || m_isStopped()) {
            return false;
        }
        QThread::msleep(10);
    }
    return true;
}

void Tour::CheckFile(const QString& check, const QString& path, const QString& line)
{
    if (!IsSimulated()) {
        LeaveOut(check, "nothing on this board writes down what the device has received");
        return;
    }
    QString shown;
    WaitFor([&] {
        QFile file(path);
        shown = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
        const bool isThere = shown.split('\n').contains(line);
        shown = isThere ? line : shown;
        return isThere;
    });
    Check(check, shown, line);
}

bool Tour::Expect(const QString& what, bool isDone)
{
    if (!isDone) {
        Check(what, {}, "done");
    }
    return isDone;
}

bool Tour::Tap(const QString& widget)
{
    return Expect("press " + widget, m_program.Click(widget));
}

bool Tour::Choose(const QString& widget, int index)
{
    return Expect("choose in " + widget, m_program.Choose(widget, index));
}

bool Tour::Choose(const QString& widget, const QString& item)
{
    return Expect("choose in " + widget, m_program.Choose(widget, item));
}

void Tour::Press(const QString& check, const QString& button, const QString& field,
                 const QString& expected, int mostMs)
{
    if (!m_program.Click(button)) {
        Check(check, {}, expected);
        return;
    }
    m_program.WaitForText(field, expected, mostMs);
    CheckText(check, field, expected);
}

void Tour::PressForStatus(const QString& check, const QString& button, const QString& field,
                          const QString& expected, const QString& status, const QString& note)
{
    if (!m_program.Click(button)) {
        Check(check, {}, expected);
        return;
    }
    const QString shown =
        m_program.Text(field) + ", " + m_program.Property(field, "status").toString();
    Check(check, shown, expected + ", " + status, note);
}

void Tour::PressAndCancel(const QString& check, const QString& button, const QString& question)
{
    if (!m_program.Click(button)) {
        Check(check, {}, question);
        return;
    }
    CheckText(check, "QMessageBox", question);
    TakePicture(m_page + '-' + button);
    m_program.PressBoxButton("No");
    m_program.Idle();
    Check(check + " cancelled", m_program.Count("QMessageBox") == 0 ? "closed" : "open", "closed");
}

void Tour::Type(const QString& field, const QString& text)
{
    Expect("type into " + field, m_program.SetText(field, text));
    PutKeyboardAway();
}

void Tour::PutKeyboardAway()
{
    const QString keys = "QQuickWidget";
    if (m_program.Property(keys, "visible").toBool()) {
        const int width = m_program.Property(keys, "width").toInt();
        const int height = m_program.Property(keys, "height").toInt();
        // This is the last key of the last row.
        m_program.ClickAt(keys, QPoint(width * 9 / 10, height * 8 / 10));
        m_program.Idle();
    }
}

void Tour::TakePicture(const QString& name)
{
    const QByteArray png = m_program.Screenshot();
    const QString path = QString("%1/%2-%3.png").arg(m_folder, name, m_language);
    QFile file(path);
    if (png.isEmpty()) {
        Check("picture", m_program.Error(), path);
    } else if (!file.open(QIODevice::WriteOnly) || file.write(png) != png.size()) {
        Check("picture", file.errorString(), path);
    } else {
        m_report.pictures.append({m_language, name, png});
    }
}
