#pragma once

#include <QSize>

/// The size of the screen, for the window and the full-screen checks.
class MoskUtility
{
public:
    /// The size in pixels of the primary screen, without the space that a desktop's panels take.
    static QSize GetMainWindowSize();
};
