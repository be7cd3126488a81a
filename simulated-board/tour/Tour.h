#pragma once

#include "simulated-board/BoardDescription.h"
#include "simulated-board/operator/Operator.h"
#include "simulated-board/tour/Report.h"

#include <QElapsedTimer>
#include <QMap>
#include <QString>

#include <functional>

/// A walk through the running program. It presses every check and compares what it shows with what
/// the board's description lets expect. For each check it prints one line: page, check, the text
/// shown, verdict. The same goes into a report.
class Tour
{
public:
    /// Presses the checks of a page that has just been opened.
    using Visit = void (*)(Tour&);

    /// The report and the pictures of the pages are saved in `folder`. The walk ends early when
    /// `isStopped` says so.
    Tour(const BoardDescription& board, const QString& folder,
         const std::function<bool()>& isStopped);

    /// Says in the report which board and which program this is.
    void Introduce(const QString& board, const QString& program);

    /// Walks through the program's pages, or those that are chosen, in both languages, and writes
    /// the report. `visits` has a visit for the name of each page. True when the walk came to its
    /// end and every check showed the expected result.
    bool Walk(const QMap<QString, Visit>& visits, const QStringList& chosen);

    /// The board that the program runs on.
    const BoardDescription& Board() const { return m_board; }

    /// Whether it is the simulated board, whose devices and tools write down what they received.
    static bool IsSimulated();

    /// The program that the tour drives.
    Operator& Program() { return m_program; }

    /// The text of a language key in the tour's current language.
    QString Label(const QString& key) const;

    /// Compares what a check showed with what it should show. The note says why it should, if the
    /// page alone does not tell. These functions do not return once the program has gone or the
    /// tour has been stopped.
    void Check(const QString& check, const QString& shown, const QString& expected,
               const QString& note = {});

    /// Says that a check is left out, and why.
    void LeaveOut(const QString& check, const QString& reason);

    /// Checks the text that a widget shows.
    void CheckText(const QString& check, const QString& widget, const QString& expected,
                   const QString& note = {});

    /// Waits until `isDone` is true, as long as the patience lasts. Returns whether it became true.
    bool WaitFor(const std::function<bool()>& isDone);

    /// Waits for a line in a file that a simulated device writes. Left out on a real board.
    void CheckFile(const QString& check, const QString& path, const QString& line);

    /// Makes a wrong check of what the program could not do, such as pressing a button that is not
    /// there: a check that was not begun must not pass. Returns whether it was done.
    bool Expect(const QString& what, bool isDone);

    /// Presses a widget, or chooses an item of a combo box, and expects that to be possible.
    bool Tap(const QString& widget);
    bool Choose(const QString& widget, int index);
    bool Choose(const QString& widget, const QString& item);

    /// How long to wait for what a check must show in the end, in ms. Only a check that goes wrong
    /// takes so long.
    int Patience() const { return m_patience; }
    void SetPatience(int ms) { m_patience = ms; }

    /// Presses a button and checks the text that `field` shows. The text is read when the button's
    /// slot has returned, or within the time limit if the check continues after that.
    void Press(const QString& check, const QString& button, const QString& field,
               const QString& expected, int mostMs = 0);

    /// Like Press(). The field's property "status", which sets its colour, must be `status` as
    /// well.
    void PressForStatus(const QString& check, const QString& button, const QString& field,
                        const QString& expected, const QString& status, const QString& note = {});

    /// Presses a button that opens a box, checks the box's question, and presses the box's button
    /// "No".
    void PressAndCancel(const QString& check, const QString& button, const QString& question);

    /// Types a text in place of a field's text and hides the on-screen keyboard, which covers the
    /// lower buttons.
    void Type(const QString& field, const QString& text);

    /// Saves the screen as NAME-LANGUAGE.png.
    void TakePicture(const QString& name);

private:
    void VisitPages(const QString& language, const QMap<QString, Visit>& visits,
                    const QStringList& chosen);
    bool OpenHome();
    void ChooseLanguage(const QString& language);
    QString ChosenLanguage();
    void Open(const QString& page, int tab);
    void CloseBoxes();
    void PutKeyboardAway();
    void PutLanguageBack(const QString& language);
    void Add(const QString& check, Report::Check result);
    bool WriteReport();

    BoardDescription m_board;
    Operator m_program;
    Report m_report;
    QString m_folder;
    std::function<bool()> m_isStopped;
    QString m_language;
    QMap<QString, QString> m_labels;
    QString m_page;
    int m_patience = 30000;
    QElapsedTimer m_walked;
    QElapsedTimer m_sinceLastCheck;
};
