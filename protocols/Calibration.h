#pragma once

class QByteArray;

/// The screen's rotation, 0 to 3, in a line of tslib's calibration file: the last of its ten
/// fields. 0 when that field is missing: older versions of tslib write nine fields.
int RotationOf(const QByteArray& calibration);
