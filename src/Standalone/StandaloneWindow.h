// The standalone host's main window, of which there is only what its panes hold.
#pragma once

#include <cstdint>
#include <map>
#include <set>

#include "Host/HostGlobal.h"
#include "Standalone/HostObserver.h"
#include "Standalone/StandaloneTree.h"

namespace vorlent {

class StandaloneWindow : public HostMainWindow {
 public:
  explicit StandaloneWindow(HostObserver& observer) : observer_(observer) {}

  // An empty tree for a pane that has none yet.
  TreePtr GetPaneTree(std::int32_t pane) override {
    TreePtr& tree = panes_[pane];
    if (tree == nullptr) tree = std::make_shared<StandaloneTree>();
    return tree;
  }
  void SetPaneTree(std::int32_t pane, const TreePtr& tree) override {
    panes_[pane] = tree;
    observer_.PaneRefreshed(pane, tree);
  }
  // No pane is shown until the host is told so.
  bool IsPaneShown(std::int32_t pane) override { return shown_.contains(pane); }

  void ShowPane(std::int32_t pane, bool shown) {
    if (shown) {
      shown_.insert(pane);
    } else {
      shown_.erase(pane);
    }
  }

 private:
  HostObserver& observer_;
  std::map<std::int32_t, TreePtr> panes_;
  std::set<std::int32_t> shown_;
};

}  // namespace vorlent
