#include "simulated-board/tour/Tour.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTextStream>
#include <QThread>

namespace
{

void Print(const QString& line)
{
    QTextStream(stdout) << line << '\n';
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

} // namespace

Tour::Tour(const QString& pictures) : m_pictures(pictures)
{
    QDir().mkpath(pictures);
}

bool Tour::Walk(const QList<Page>& pages)
{
    QElapsedTimer walked;
    walked.start();
    // If the program hangs, each check would wait for half a minute.
    m_program.SetLimit(10000);
    if (!m_program.Connect()) {
        Print(m_program.Error());
        return false;
    }
    const QStringList languages{"english", "chinese"};
    for (const QString& language : languages) {
        Print(QString("In %1:").arg(language));
        // The program lists Chinese first.
        ChooseLanguage(language == "english" ? 1 : 0, language);
        for (const Page& page : pages) {
            Open(page);
            page.visit(*this);
            TakePicture(page.name);
        }
    }
    Print(QString("%1 checks, %2 wrong, %3 s")
              .arg(m_checks)
              .arg(m_wrong)
              .arg(static_cast<double>(walked.elapsed()) / 1000, 0, 'f', 1));
    return m_wrong == 0;
}

void Tour::ChooseLanguage(int item, const QString& language)
{
    m_language = language;
    m_labels = ReadLabels(language);
    m_page = "home";
    const bool isChosen = m_program.ClickTab("menuTab", 0) &&
                          m_program.Choose("bodyWidget QComboBox", item) && m_program.Idle();
    if (!isChosen) {
        Check("choice", m_program.Error(), language);
    }
    CheckText("language", "bodyWidget QLabel[0]", Label("Label_1000210"));
}

void Tour::Open(const Page& page)
{
    m_page = page.name;
    if (page.tab >= 0) {
        m_program.ClickTab("menuTab", page.tab);
    } else {
        m_program.OpenPage(page.id);
    }
    m_program.Idle();
}

QString Tour::Label(const QString& key) const
{
    return m_labels.value(key, key);
}

void Tour::Check(const QString& check, const QString& shown, const QString& expected)
{
    const bool isRight = shown == expected;
    QString verdict = isRight ? "ok" : QString("WRONG, expected \"%1\"").arg(expected);
    if (!isRight && !m_program.Error().isEmpty()) {
        verdict += ": " + m_program.Error();
    }
    Print(QStringList{m_page, check, QString(shown).replace('\n', ' '), verdict}.join(" | "));
    ++m_checks;
    m_wrong += isRight ? 0 : 1;
}

void Tour::CheckText(const QString& check, const QString& widget, const QString& expected)
{
    Check(check, m_program.Text(widget), expected);
}

void Tour::CheckFile(const QString& check, const QString& path, const QString& line)
{
    QElapsedTimer timer;
    timer.start();
    QString shown;
    do {
        QFile file(path);
        shown = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
        if (shown.split('\n').contains(line)) {
            shown = line;
            break;
        }
        QThread::msleep(10);
    } while (timer.elapsed() < 5000);
    Check(check, shown, line);
}

void Tour::Press(const QString& check, const QString& button, const QString& field,
                 const QString& expected, int limitMs)
{
    if (!m_program.Click(button)) {
        Check(check, {}, expected);
        return;
    }
    m_program.WaitForText(field, expected, limitMs);
    CheckText(check, field, expected);
}

void Tour::PressForStatus(const QString& check, const QString& button, const QString& field,
                          const QString& expected, const QString& status)
{
    m_program.Click(button);
    const QString shown = m_program.Text(field);
    const QString shownStatus = m_program.Property(field, "status").toString();
    Check(check, shown + ", " + shownStatus, expected + ", " + status);
}

void Tour::PressAndCancel(const QString& check, const QString& button, const QString& question)
{
    m_program.Click(button);
    CheckText(check, "QMessageBox", question);
    TakePicture(m_page + '-' + button);
    m_program.PressBoxButton("No");
    m_program.Idle();
    Check(check + " cancelled", m_program.Count("QMessageBox") == 0 ? "closed" : "open", "closed");
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
    const QString path = QString("%1/%2-%3.png").arg(m_pictures, name, m_language);
    if (!m_program.Screenshot(path)) {
        Check("picture", m_program.Error(), path);
    }
}
