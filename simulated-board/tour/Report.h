#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

/// What a tour has seen, and its two files.
class Report
{
public:
    enum class Verdict { Right, Wrong, LeftOut };

    struct Check {
        QString language;
        QString page;
        QString name;
        QString shown;
        QString expected;
        QString note; ///< why this was expected, or why the check was left out
        Verdict verdict = Verdict::Right;
        qint64 ms = 0;
    };

    /// A picture of the screen, as a PNG file's bytes.
    struct Picture {
        QString language;
        QString name;
        QByteArray png;
    };

    QString board;
    QString kernel;
    QString program;
    QDateTime begun = QDateTime::currentDateTime();
    qint64 ms = 0;
    /// Why the tour has not come to its end; empty when it has.
    QString incomplete = "the tour has not come to its end";
    QList<Check> checks;
    QList<Picture> pictures;

    int Count(Verdict verdict) const;

    /// Whether the tour has come to its end and every check was right.
    bool IsGood() const { return incomplete.isEmpty() && Count(Verdict::Wrong) == 0; }

    /// Writes report.html and report.xml to a folder. Each is complete and on the disk when this
    /// returns, or the one from before is still there. On failure returns false, and `error` says
    /// why.
    bool Write(const QString& folder, QString* error) const;
};

/// The report as a page for people: it needs no other file. Wrong checks come first.
QByteArray HtmlOf(const Report& report);

/// The report as JUnit's XML, for programs that collect test results.
QByteArray JUnitOf(const Report& report);

/// The text without characters that XML and terminals do not take: they are shown as pictures of
/// control characters, or as U+FFFD. Line ends and tabs stay.
QString Visible(const QString& text);
