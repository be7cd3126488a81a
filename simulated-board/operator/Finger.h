#pragma once

#include <QPoint>
#include <QString>

class QWindow;

/// The operator's finger and keys: input events as the drivers of screen and keyboard send them.
/// They wait in the program's queue like those of a real operator.
class Finger
{
public:
    /// Touches a place of a window: comes there, presses, lets go.
    static void Tap(QWindow* window, const QPoint& place);

    /// Presses and releases one key.
    static void PressKey(QWindow* window, int key, Qt::KeyboardModifiers modifiers,
                         const QString& text);

    /// Types a text, character by character.
    static void Type(QWindow* window, const QString& text);

    /// Whether input is on its way that the program has not taken yet.
    static bool IsOnItsWay();
};
