#include "texts/MoskUtility.h"

#include <QGuiApplication>
#include <QScreen>

QSize MoskUtility::GetMainWindowSize()
{
    return QGuiApplication::primaryScreen()->availableGeometry().size();
}
