#pragma once

#include <QVariantList>
#include <QWidget>

class QTimer;
class QVBoxLayout;

/// The area of the window below the header. It shows one page at a time, and builds a page each
/// time that it is opened.
class BodyWidget : public QWidget
{
    Q_OBJECT

public:
    enum PageId {
        NoPage = 0,
        HomePage = 1,
        BasicPage = 2,
        SerialPage = 3,
        DatabasePage = 4,
        ProductionPage = 5,
        WifiPage = 6,
        VoicePage = 7,
        CanPage = 8,
        RemoteAccessPage = 9,
        CameraPage = 10,
    };

    explicit BodyWidget(QWidget* parent);

    /// Deletes the current page and builds the page of `id`. A page that is already open is kept.
    /// An id outside 1 to 10 leaves the body empty. Never call this from a slot of the current
    /// page.
    ///
    /// While a list or a box of the page is open, the change is put off. Of several ids, the last
    /// one counts. Can be called by name, because some pages have no tab and are opened by id only.
    Q_INVOKABLE void OpenPage(int id);

    /// All pages, in the order of their ids, for programs that drive this one from outside. Each is
    /// a map of its "id", its "name" and its "tab": its place in the menu, or -1.
    Q_INVOKABLE static QVariantList Pages();

    /// Builds the open page again, in the current language. This is put off like OpenPage().
    void TranslateUI();

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void OnLater();

private:
    bool IsChangeDue() const;
    static bool IsPageWaiting();
    QWidget* ShownList() const;
    void ChangePage();
    void ClosePage();
    QWidget* BuildPage(int id);

    QVBoxLayout* m_layout = nullptr;
    int m_pageId = NoPage;
    QWidget* m_page = nullptr;

    /// The page that was asked for, and whether it must be built again even if it is already open.
    int m_wantedId = NoPage;
    bool m_isStale = false;
    QTimer* m_later = nullptr;
};
