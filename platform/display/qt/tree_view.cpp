// tree_view.cpp - the tree of the main window. It shows what the core's tree holds, and that has no items.

#include "tree_view.h"

#include "focus_outline.h"

#include <QTreeView>

namespace platform::qt {

namespace {

class ItemTreeView final : public QTreeView, public View {
public:
    ItemTreeView(const window::WindowState& state, const Courier& courier, QWidget* parent)
        : QTreeView(parent), View(state.window, courier), outline_(this)
    {
        setHeaderHidden(true);
        setUniformRowHeights(true);
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const window::WindowState& state, Changes) override { setAccessibleName(toQt(state.text)); }

private:
    FocusOutline outline_;
};

}  // namespace

View* makeTreeView(const window::WindowState& state, const Courier& courier, QWidget* parent)
{
    return new ItemTreeView(state, courier, parent);
}

}  // namespace platform::qt
