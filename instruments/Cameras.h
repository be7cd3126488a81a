#pragma once

#include <QStringList>

#include <memory>

class QWidget;

/// The board's cameras, and the picture of the open one. They are the one use of Qt Multimedia,
/// which brings a dozen libraries with it, so they stand in a library of their own that is loaded
/// when they are first asked for.
class Cameras
{
public:
    /// Looks for cameras and makes a widget for their picture, a child of `page`. Null, after a
    /// warning, where the library is missing.
    static std::unique_ptr<Cameras> Find(QWidget* page);

    /// Closes the camera that is open. The viewfinder stays with its page.
    virtual ~Cameras() = default;

    /// The cameras' descriptions, as they were found.
    virtual QStringList Names() const = 0;

    virtual QWidget* Viewfinder() const = 0;

    /// Closes the camera that is open, and shows the picture of the one with this index of Names().
    virtual void Open(int index) = 0;

    virtual void Close() = 0;
};
