#pragma once

#include <QByteArray>
#include <QColor>
#include <QString>
#include <QVector>

/// A camera of the simulated board.
struct BoardCamera {
    QByteArray device;
    QString description;
    /// What its picture shows; an invalid colour for a camera that cannot be opened.
    QColor colour;
};

/// The cameras that the board's description has by now, in its order.
QVector<BoardCamera> CamerasOfTheBoard();
