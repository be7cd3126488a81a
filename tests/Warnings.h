#pragma once

#include <QStringList>

/// Collects what the program warns of while an object of this class exists.
class Warnings
{
public:
    Warnings() : m_before(qInstallMessageHandler(Keep)) { s_texts.clear(); }
    ~Warnings() { qInstallMessageHandler(m_before); }
    Warnings(const Warnings&) = delete;
    Warnings& operator=(const Warnings&) = delete;

    static QStringList Texts() { return s_texts; }

private:
    static void Keep(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text)
    {
        if (type == QtWarningMsg || type == QtCriticalMsg) {
            s_texts += text;
        }
    }

    inline static QStringList s_texts;
    const QtMessageHandler m_before;
};
