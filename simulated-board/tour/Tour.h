#pragma once

#include "simulated-board/operator/Operator.h"

#include <QMap>
#include <QString>

/// A walk through the running program that presses every check and knows what a good board gives.
/// Each check is one printed line: page, check, what the program showed, verdict.
class Tour
{
public:
    /// A page of the program: opened by its tab in the menu, or by its id where it has none.
    struct Page {
        const char* name;
        int id;
        int tab;
        void (*visit)(Tour&);
    };

    /// The pictures of the pages go into the folder `pictures`.
    explicit Tour(const QString& pictures);

    /// Walks the pages in both languages. True when every check showed what it should.
    bool Walk(const QList<Page>& pages);

    /// The program under the tour's hands.
    Operator& Program() { return m_program; }

    /// The text of a language key in the language that the tour has chosen.
    QString Label(const QString& key) const;

    /// Judges what a check showed, and prints it.
    void Check(const QString& check, const QString& shown, const QString& expected);

    /// Judges the text that a widget shows.
    void CheckText(const QString& check, const QString& widget, const QString& expected);

    /// Judges a line that what is plugged into the board leaves in a file, within 5 s.
    void CheckFile(const QString& check, const QString& path, const QString& line);

    /// Presses a button and judges the text that `field` shows when its slot has returned, or
    /// within the time limit for a check that goes on after it.
    void Press(const QString& check, const QString& button, const QString& field,
               const QString& expected, int limitMs = 0);

    /// As Press(); the field's "status" must be `status` as well, which gives it its colour.
    void PressForStatus(const QString& check, const QString& button, const QString& field,
                        const QString& expected, const QString& status);

    /// Presses a button that opens a box, judges what the box asks, and presses the button "No".
    void PressAndCancel(const QString& check, const QString& button, const QString& question);

    /// Presses the key that puts the on-screen keyboard away, which covers the lower buttons.
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
