#pragma once

class QByteArray;

/// The screen's rotation, 0 to 3, in the line of a touch screen's calibration file as tslib writes
/// it: the last of ten fields. 0 where there is none: lines of older versions have nine fields.
int RotationOf(const QByteArray& calibration);
