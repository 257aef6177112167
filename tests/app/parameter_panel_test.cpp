// The parameter panel shows the parameters it is given as they are.
#include <QComboBox>

#include <gtest/gtest.h>

#include "detection/ui/parameter_panel.h"
#include "recording/settings.h"

namespace vess::test {
namespace {

// Points at peak up to 255 are accepted from files; the list offers 1 to 21,
// and a larger value is added to it rather than shown as 21.
TEST(ParameterPanelTest, PointsAtPeakBeyondTheListIsShownAsItIs) {
    ParameterPanel panel;
    Settings settings;
    auto* points = panel.PointsAtPeakBox();
    settings.analysis.NumberPointsPeak = 5;
    panel.Show(settings, "pA", 50);
    EXPECT_EQ(points->currentText(), "5");
    settings.analysis.NumberPointsPeak = 40;
    panel.Show(settings, "pA", 50);
    EXPECT_EQ(points->currentText(), "40");
    panel.Show(settings, "pA", 50);  // shown again: no second "40"
    EXPECT_EQ(points->findText("40"), points->count() - 1);
    EXPECT_EQ(points->count(), 22);
}

}  // namespace
}  // namespace vess::test
