#pragma once

class QByteArray;

/// The number that a counting command such as `wc -l` printed; 0 when it printed none.
int CountOf(const QByteArray& output);

/// How many of the MMC devices found are SD cards: all but one, the board's own eMMC.
int SdCardsAmong(int mmcDevices);
