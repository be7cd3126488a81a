#pragma once

#include <QMap>
#include <QString>

/// The table of every text that the program shows, in the language of the setting `Language`.
///
/// A language file is UTF-8 with a byte-order mark, which is what makes the reading stream decode
/// it. A line is KEY=TEXT, cut at the first '=' and never trimmed; empty lines and lines that begin
/// with '#' define nothing.
class MoskTranslator
{
public:
    /// The one translator; created and loaded on the first call.
    static MoskTranslator* GetTranslator();

    /// Deletes the one translator; the next GetTranslator() loads a fresh one.
    static void ReleaseTranslator();

    /// The text of a `Label_` key in the current language; an unknown key comes back unchanged.
    static QString Translate(QString key);

    /// Loads the table again after the language was changed. Returns as Init().
    static int Reload();

    /// Loads ":/language/<Language>.ini", or Chinese where there is no such file. Returns 0, or -1
    /// when neither could be opened: then the table stays as it was.
    int Init();

    /// What Translate() asks.
    QString DoTranslate(QString& key);

private:
    QMap<QString, QString> m_texts;

    static MoskTranslator* s_translator;
};
