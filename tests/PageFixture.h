#pragma once

#include "frame/Look.h"
#include "tests/Operate.h"

#include <QTest>

#include <memory>

/// The base of a page's test: the page on show alone, in the program's look, as large as it is in
/// the window.
template <typename Page>
class PageFixture : public QObject
{
protected:
    /// Shows a new page in place of the one before, and waits until it is on the screen.
    void Rebuild()
    {
        ShowNewPage();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
    }

    /// Shows a new page in place of the one before, and leaves all waiting to the test.
    void ShowNewPage()
    {
        m_page.reset();
        ApplyLook();
        m_page = std::make_unique<Page>(nullptr);
        m_page->resize(1024, 550);
        m_page->show();
    }

    std::unique_ptr<Page> m_page;
};
