#pragma once

#include <QByteArray>

// Bytes as escapes, as board descriptions and the supplicant's client write them.

/// Returns the bytes that a text with the escapes \n, \t, \\ and \xHH stands for.
QByteArray Unescaped(const QByteArray& text);

/// A network's name as the supplicant prints it. Quotes, back-slashes and bytes that are not
/// printable ASCII become escapes.
QByteArray Printed(const QByteArray& name);
