#pragma once

class QString;
class QWidget;

/// Asks a question in a modal box with the buttons "OK" and "Cancel". True when "OK" was pressed.
bool AskOperator(QWidget* parent, const QString& question);

/// Shows a text in a modal box with the one button "OK".
void TellOperator(QWidget* parent, const QString& text);
