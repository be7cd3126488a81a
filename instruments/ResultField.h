#pragma once

class QLineEdit;
class QString;

/// Shows a verdict in a result field: its text, in green when `ok`, else in red.
void ShowVerdict(QLineEdit* field, const QString& text, bool ok);

/// Shows that a check has begun, before the check blocks the GUI thread.
void ShowDetecting(QLineEdit* field);

/// Brings the page as it is now to the screen. Input from the operator waits until the running slot
/// has returned: a tab pressed during the slot would delete its page.
void PaintPage();
