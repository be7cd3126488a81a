#pragma once

class QLineEdit;
class QString;

/// Shows a verdict in a result field: its text, in green when `ok`, else in red.
void ShowVerdict(QLineEdit* field, const QString& text, bool ok);

/// Shows that a check has begun, before the check blocks the GUI thread.
void ShowDetecting(QLineEdit* field);

/// Brings what the page shows by now to the screen. What the operator presses meanwhile waits until
/// the running slot has returned: a menu tab would delete the page under its own slot.
void PaintPage();
