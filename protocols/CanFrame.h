#pragma once

#include <QString>

struct can_frame;

/// The one frame that the program sends: extended, identifier 1, eight bytes of data. `hex` is a
/// hexadecimal number of up to 16 digits, most significant byte first; any other text counts as 0.
can_frame CanFrameOf(const QString& hex);

/// A received frame as text: its identifier without the extended flag, its length, and all eight
/// data bytes whatever the length is.
QString CanFrameText(const can_frame& frame);
