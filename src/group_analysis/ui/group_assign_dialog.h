// One dialog for the three group assignments (menu_groupBursts,
// menu_groupEpisodic, menu_groupbyrandom): the mode's settings, a preview of
// the counts per group, and Apply as one undoable change.
#pragma once

#include <QDialog>

#include <string_view>

#include "group_analysis/group_assign.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QSpinBox;
class QStackedWidget;

namespace vess {
struct Workspace;
}

namespace vess::group {

enum class GroupAssignMode { Bursts, Episodic, Random };
std::string_view GroupAssignModeName(GroupAssignMode mode);

class GroupAssignDialog : public QDialog {
    Q_OBJECT
public:
    GroupAssignDialog(Workspace& ws, GroupAssignMode mode, QWidget* parent = nullptr);

    void SetMode(GroupAssignMode mode);
    GroupPlan Plan() const;
    void UpdatePreview();
    void Apply();
    QLabel* Preview() const { return preview_; }
    QSpinBox* RandomGroups() const { return randomGroups_; }
    QSpinBox* RandomSeed() const { return seed_; }

private:
    Workspace& ws_;
    QComboBox* mode_;
    QStackedWidget* pages_;
    QDoubleSpinBox *maxInterval_, *window_;
    QSpinBox *minEvents_, *burstGroup_, *firstGroup_, *randomGroups_, *randomFirst_, *seed_, *source_;
    QCheckBox *firstOnly_, *bySweep_;
    QLabel* preview_;
};

}  // namespace vess::group
