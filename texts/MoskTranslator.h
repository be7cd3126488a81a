#pragma once

#include <QMap>
#include <QString>

/// The table of every text that the program shows, in the language of the setting `Language`.
///
/// A language file is UTF-8. It begins with a byte-order mark, by which the reading stream knows
/// the encoding. A line is KEY=TEXT, split at the first '=' and never trimmed. Empty lines and
/// lines that begin with '#' are skipped.
class MoskTranslator
{
public:
    /// The one translator; created and loaded on the first call.
    static MoskTranslator* GetTranslator();

    /// Deletes the one translator; the next GetTranslator() loads a fresh one.
    static void ReleaseTranslator();

    /// The text of a `Label_` key in the current language; an unknown key comes back unchanged.
    static QString Translate(QString key);

    /// Loads the table again after a change of language. Returns the result of Init().
    static int Reload();

    /// Loads ":/language/<Language>.ini", or Chinese if there is no such file. Returns 0, or -1
    /// when neither could be opened. In that case the table stays as it was.
    int Init();

    /// Looks up a key for Translate().
    QString DoTranslate(QString& key);

private:
    QMap<QString, QString> m_texts;

    static MoskTranslator* s_translator;
};
