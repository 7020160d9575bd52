// The library pane with two tabs, saved slides and templates, that
// openSlideLibraryTaskpane shows.
//
// Provides: LibraryTab, libraryTabLabel(), LibraryTaskpane, LibraryContentManager.
// Only the tab on show has a pane: each switch builds the other one afresh,
// so filters and choices go with the tab that is left, while both view
// models, process-wide, keep their lists. Main thread only.
#pragma once

#include <memory>

#include "slidelibrary/SlideLibraryPane.h"
#include "taskpane/TaskpaneManager.h"
#include "templatelibrary/TemplateLibraryPane.h"
#include "ui/HostingView.h"
#include "ui/Node.h"

namespace velmora {

enum class LibraryTab { savedSlides, templates };

// "Saved Slides", "Templates".
const char* libraryTabLabel(LibraryTab tab);

class LibraryTaskpane : public std::enable_shared_from_this<LibraryTaskpane> {
public:
    LibraryTab selectedTab() const { return selectedTab_; }
    void select(LibraryTab tab);

    ui::Node body(double width);
    void attach(const std::weak_ptr<ui::HostingView>& view);

private:
    // Builds the pane of the selected tab when it has none, and redraws on
    // changes of its view model while that tab is on show.
    void ensurePane();
    void redraw();

    LibraryTab selectedTab_ = LibraryTab::templates;
    std::shared_ptr<SlideLibraryTaskpane> slides_;
    std::shared_ptr<TemplateLibraryTaskpane> templates_;
    bool observesSlides_ = false, observesTemplates_ = false;
    std::weak_ptr<ui::HostingView> view_;
};

class LibraryContentManager {
public:
    // A new container, on its Templates tab, handed over at once.
    static void loadLibraryView(ContentCompletion completion);

private:
    static std::shared_ptr<ui::HostingView>& hostingController();
};

}  // namespace velmora
