#include "frame/MoskUtility.h"

#include <QGuiApplication>
#include <QScreen>

QSize MoskUtility::GetMainWindowSize()
{
    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
    return {available.right() - available.left() + 1, available.bottom() - available.top() + 1};
}
