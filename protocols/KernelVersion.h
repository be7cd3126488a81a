#pragma once

class QString;

/// The build stamp in the line of /proc/version: its last six words. Words are split at single
/// blanks, so there is an empty word between two blanks. Empty when the line has six words or
/// fewer.
QString BuildStampOf(const QString& version);
