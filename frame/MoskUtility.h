#pragma once

#include <QSize>

/// What the frame and the full-screen checks need to know of the screen.
class MoskUtility
{
public:
    /// Size in pixels of the primary screen without the room that panels reserve.
    static QSize GetMainWindowSize();
};
