#pragma once

#include <QPoint>
#include <QString>

class QWindow;

/// The operator's finger and keyboard. Sends input events as the drivers of screen and keyboard do.
/// Like real input, they wait in the program's queue.
class Finger
{
public:
    /// Taps a place of a window: moves there, presses and releases.
    static void Tap(QWindow* window, const QPoint& place);

    /// Turns the wheel of a mouse over a place of a window, by notches; away from the user if
    /// positive.
    static void TurnWheel(QWindow* window, const QPoint& place, int notches);

    /// Presses and releases one key. The menu key asks for a context menu, as on an X server.
    static void PressKey(QWindow* window, int key, Qt::KeyboardModifiers modifiers,
                         const QString& text);

    /// Types a text, character by character.
    static void Type(QWindow* window, const QString& text);

    /// Whether there is input that the program has not handled yet.
    static bool IsOnItsWay();
};
