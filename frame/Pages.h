#pragma once

#include "frame/BodyWidget.h"

#include <array>

/// A page of the program.
struct Page {
    BodyWidget::PageId id;
    const char* name;   ///< as the tour, the service and other programs call it
    const char* tabKey; ///< the key of its tab's text; null for a page without a tab
    QWidget* (*build)(QWidget* parent);
};

/// All pages, in the order of their ids. The menu has its tabs in this order.
extern const std::array<Page, 10> allPages;
