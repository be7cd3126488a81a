#pragma once

class QString;

/// The build stamp in the kernel's line of /proc/version: its last six words, an empty one between
/// two blanks included. Empty where the line has no more than six.
QString BuildStampOf(const QString& version);
