// view_makers.h - the functions that make the views of all windows except dialogs. makeControlView() is defined in
// view_makers.cpp, and each other maker in the source file of its view.
//
// The toolkit deletes the widget of a view together with its `parent` or `owner`.
#pragma once

#include "top_view.h"
#include "view.h"

#include "start/window_module.h"

class QTreeView;

namespace platform::qt {

// Makes the view for the control's kind. Returns null for a kind that isn't shown.
View* makeControlView(const window::WindowState& state, const UserInput& input, QWidget* parent);

// Makes a push button, a check box, a radio button or a group box, according to the window's style.
View* makeButtonView(const window::WindowState& state, const UserInput& input, QWidget* parent);
View* makeDateView(const window::WindowState& state, const UserInput& input, QWidget* parent);
// Makes an edit of one line or of several lines, according to the window's style.
View* makeEditView(const window::WindowState& state, const UserInput& input, QWidget* parent);
View* makeListView(const window::WindowState& state, const UserInput& input, QWidget* parent);
View* makeProgressView(const window::WindowState& state, const UserInput& input, QWidget* parent);
// Makes a label with a text or an icon.
View* makeStaticView(const window::WindowState& state, const UserInput& input, QWidget* parent);
View* makeTreeView(const window::WindowState& state, const UserInput& input, QWidget* parent);

TopView* makeMainView(const window::WindowState& state, const UserInput& input, const display::HostServices& host);
TopView* makeMessageView(const window::WindowState& state, const UserInput& input, QWidget* owner);

// The next two functions are defined in tree_accessible.cpp. useTreeAccessible() makes the toolkit use the accessible
// interface of that file for each tree view with a TreeItemsModel. So a screen reader can say that an item is partly
// marked. Further calls change nothing.
void useTreeAccessible();
// Must be called when the current item of the tree was expanded, collapsed, marked or unmarked. The toolkit sends no
// event for such a change to a screen reader. So this function replaces the accessible object of the item by a new
// object, and reports that the new object has the focus. The screen reader reads the new object with its new state.
void reportCurrentAgain(QTreeView& tree);

}  // namespace platform::qt
