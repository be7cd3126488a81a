#include "frame/Look.h"

#include <QApplication>
#include <QFile>
#include <QFont>

void ApplyLook()
{
    // Fitting letters to the pixels is a tenth of the work of a start and takes 2 MB. At the sizes
    // of the sheet they look the same without it.
    QFont font = QApplication::font();
    font.setHintingPreference(QFont::PreferNoHinting);
    QApplication::setFont(font);

    QFile sheet(":/qss/style.qss");
    if (sheet.open(QIODevice::ReadOnly)) {
        qApp->setStyleSheet(QString::fromLatin1(sheet.readAll().constData()));
    }
}
