#pragma once

class QLabel;
class QSize;
class QString;
class QWidget;

/// A label of a fixed size with the text of a language key, as it stands before a field. Where the
/// board's font is too wide for it the letters are set narrower, so that no text is cut.
QLabel* NewTitle(const QString& key, const QSize& size, QWidget* parent);
