#include "app/ToolBox.h"

#include "canvas/Canvas.h"
#include "canvas/ToolPictures.h"
#include "core/AppSettings.h"
#include "document/Tools.h"

#include <QButtonGroup>
#include <QMenu>
#include <QToolButton>

namespace vm {

namespace {

QString ToolTipOf(const ToolInfo& tool) {
    return tool.Key.isNull() ? tool.Title : tool.Title + QStringLiteral(" (") + tool.Key + QLatin1Char(')');
}

} // namespace

ToolBox::ToolBox(QWidget* parent) : QToolBar(QStringLiteral("工具"), parent), group_(new QButtonGroup(this)) {
    setObjectName(QStringLiteral("ToolBox"));
    setOrientation(Qt::Vertical);
    setMovable(false);
    setFloatable(false);
    setIconSize(QSize(24, 24));
    setAllowedAreas(Qt::LeftToolBarArea | Qt::RightToolBarArea);
    group_->setExclusive(true);

    // The slot a tool lands in starts with the tool the last run ended with.
    const int32_t last = Globals().LastSelectedTool;
    for (const ToolInfo& tool : ToolTable()) {
        const int32_t slot = ToolSlotOf(tool.Index);
        if (buttons_.count(slot)) continue;
        auto* button = new QToolButton(this);
        button->setCheckable(true);
        button->setAutoRaise(true);
        button->setIconSize(QSize(24, 24));
        button->setObjectName(QStringLiteral("Tool") + QString::number(slot));
        addWidget(button);
        group_->addButton(button, slot);
        buttons_[slot] = button;
        slotTools_[slot] = slot;
        connect(button, &QToolButton::clicked, this, [this, slot] { ToolButton_Click(slotTools_[slot]); });

        // A shared slot offers its tools on a long press or the right button.
        QMenu* menu = nullptr;
        for (const ToolInfo& other : ToolTable()) {
            if (ToolSlotOf(other.Index) != slot || other.Index == slot) continue;
            if (!menu) {
                menu = new QMenu(button);
                const ToolInfo* first = FindTool(slot);
                QAction* a = menu->addAction(ToolIcon(first->Name), ToolTipOf(*first));
                connect(a, &QAction::triggered, this, [this, slot] { ToolButton_Click(slot); });
            }
            QAction* a = menu->addAction(ToolIcon(other.Name), ToolTipOf(other));
            const int32_t index = other.Index;
            connect(a, &QAction::triggered, this, [this, index] { ToolButton_Click(index); });
            if (last == index) slotTools_[slot] = index;
        }
        if (menu) {
            button->setMenu(menu);
            button->setPopupMode(QToolButton::DelayedPopup);
            button->setContextMenuPolicy(Qt::CustomContextMenu);
            connect(button, &QWidget::customContextMenuRequested, this,
                    [button, menu](const QPoint& at) { menu->popup(button->mapToGlobal(at)); });
        }
        ShowSlotTool(slot, slotTools_[slot]);
    }
}

QToolButton* ToolBox::SlotButton(int32_t slot) const {
    auto it = buttons_.find(slot);
    return it == buttons_.end() ? nullptr : it->second;
}

int32_t ToolBox::SlotTool(int32_t slot) const {
    auto it = slotTools_.find(slot);
    return it == slotTools_.end() ? -1 : it->second;
}

void ToolBox::ShowSlotTool(int32_t slot, int32_t index) {
    const ToolInfo* tool = FindTool(index);
    QToolButton* button = SlotButton(slot);
    if (!tool || !button) return;
    slotTools_[slot] = index;
    button->setIcon(ToolIcon(tool->Name));
    button->setToolTip(ToolTipOf(*tool));
}

void ToolBox::ToolButton_Click(int32_t index) {
    const ToolInfo* tool = FindTool(index);
    if (!tool) return;
    const int32_t slot = ToolSlotOf(index);
    ShowSlotTool(slot, index);
    if (QToolButton* button = SlotButton(slot)) button->setChecked(true);
    SetWorkingMode(index);
    Globals().LastSelectedTool = index;
    current_ = index;
    hint_ = tool->Hint;
    emit ToolChanged(index);
    emit HintChanged(hint_);
}

} // namespace vm
