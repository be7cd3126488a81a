#include "texts/MoskTranslator.h"

#include "texts/MoskSettings.h"

#include <QFile>
#include <QTextStream>

MoskTranslator* MoskTranslator::s_translator = nullptr;

MoskTranslator* MoskTranslator::GetTranslator()
{
    if (s_translator == nullptr) {
        s_translator = new MoskTranslator;
        s_translator->Init();
    }
    return s_translator;
}

void MoskTranslator::ReleaseTranslator()
{
    delete s_translator;
    s_translator = nullptr;
}

QString MoskTranslator::Translate(QString key)
{
    return GetTranslator()->DoTranslate(key);
}

int MoskTranslator::Reload()
{
    return GetTranslator()->Init();
}

int MoskTranslator::Init()
{
    const QString path = QString(":/language/%1.ini");
    QFile file(path.arg(MoskSettings::GetInstance()->GetValue("Language")));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        file.setFileName(path.arg("chinese"));
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            return -1;
        }
    }

    m_texts.clear();
    QTextStream stream(&file);
    while (!stream.atEnd()) {
        const QString line = stream.readLine();
        const int equals = line.indexOf('=');
        if (line.startsWith('#') || equals < 0) {
            continue;
        }
        m_texts.insert(line.left(equals), line.mid(equals + 1));
    }
    return 0;
}

QString MoskTranslator::DoTranslate(QString& key)
{
    return m_texts.contains(key) ? m_texts[key] : key;
}
