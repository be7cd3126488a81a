#pragma once

#include <QByteArray>
#include <QColor>
#include <QString>
#include <QVector>

/// A camera of the simulated board.
struct BoardCamera {
    QByteArray device;
    QString description;
    /// The colour of its picture; invalid for a camera that cannot be opened.
    QColor colour;
};

/// The cameras in the board's current description, in its order.
QVector<BoardCamera> CamerasOfTheBoard();
