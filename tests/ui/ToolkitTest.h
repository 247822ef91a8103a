#pragma once

#include "platform/linux/glib/Ref.h"

#include <adwaita.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace ondrel::ui {

// A test with a display. What the toolkit complains about fails it.
class ToolkitTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
};

// Takes the toolkit's turns until `done` holds; false when it doesn't come to that.
bool runUntil(const std::function<bool()>& done);

// The widget with that name, itself or below; null when there is none.
GtkWidget* find(GtkWidget* root, const std::string& name);
// What the labels that can be seen say, from top to bottom. As if the root were on screen.
std::vector<std::string> visibleTexts(GtkWidget* root);
GtkWidget* buttonWithLabel(GtkWidget* root, const std::string& label);
void click(GtkWidget* button);
bool hasAccessibleLabel(GtkWidget* widget, const std::string& label);

} // namespace ondrel::ui
