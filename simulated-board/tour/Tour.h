#pragma once

#include "simulated-board/operator/Operator.h"

#include <QMap>
#include <QString>

/// A walk through the running program. It presses every check and compares the results with those
/// of a good board. For each check it prints one line: page, check, the text shown, verdict.
class Tour
{
public:
    /// A page of the program. It is opened by its tab in the menu, or by its id if it has no tab.
    struct Page {
        const char* name;
        int id;
        int tab;
        void (*visit)(Tour&);
    };

    /// Pictures of the pages are saved in the folder `pictures`.
    explicit Tour(const QString& pictures);

    /// Walks through the pages in both languages. True when every check showed the expected result.
    bool Walk(const QList<Page>& pages);

    /// The program that the tour drives.
    Operator& Program() { return m_program; }

    /// The text of a language key in the tour's current language.
    QString Label(const QString& key) const;

    /// Compares what a check showed with what it should show, and prints the verdict.
    void Check(const QString& check, const QString& shown, const QString& expected);

    /// Checks the text that a widget shows.
    void CheckText(const QString& check, const QString& widget, const QString& expected);

    /// Waits up to 5 s for a line in a file that a simulated device writes.
    void CheckFile(const QString& check, const QString& path, const QString& line);

    /// Presses a button and checks the text that `field` shows. The text is read when the button's
    /// slot has returned, or within the time limit if the check continues after that.
    void Press(const QString& check, const QString& button, const QString& field,
               const QString& expected, int limitMs = 0);

    /// Like Press(). The field's property "status", which sets its colour, must be `status` as
    /// well.
    void PressForStatus(const QString& check, const QString& button, const QString& field,
                        const QString& expected, const QString& status);

    /// Presses a button that opens a box, checks the box's question, and presses the box's button
    /// "No".
    void PressAndCancel(const QString& check, const QString& button, const QString& question);

    /// Presses the key that hides the on-screen keyboard, which covers the lower buttons.
    void PutKeyboardAway();

    /// Saves the screen as NAME-LANGUAGE.png.
    void TakePicture(const QString& name);

private:
    void ChooseLanguage(int item, const QString& language);
    void Open(const Page& page);

    Operator m_program;
    QString m_pictures;
    QString m_language;
    QMap<QString, QString> m_labels;
    QString m_page;
    int m_checks = 0;
    int m_wrong = 0;
};
