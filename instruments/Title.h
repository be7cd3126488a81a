#pragma once

class QLabel;
class QSize;
class QString;
class QWidget;

/// A label of a fixed size with the text of a language key, as it stands before a field. Its text
/// is never cut.
QLabel* NewTitle(const QString& key, const QSize& size, QWidget* parent);

/// Sets the letters of a widget of a fixed width narrower, where the board's font is too wide for
/// it, so that no text is cut.
void NarrowText(QWidget* widget);
