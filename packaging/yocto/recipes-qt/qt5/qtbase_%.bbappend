# The screen, the database check, fonts by language, and a resistive screen's calibration.
PACKAGECONFIG:append = " linuxfb sql-sqlite fontconfig tslib"
