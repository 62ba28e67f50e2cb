#include "support/fake/FakeFloatingPanels.h"

#include <algorithm>

namespace veltrin {
namespace {

class FakeFloatingPanel final : public FloatingPanel {
public:
    FakeFloatingPanel(FakeRunLoop& loop, FakeEventLog& log,
                      std::shared_ptr<FakeFloatingPanels::Record> record, double fadeDuration)
        : loop_(loop), log_(log), record_(std::move(record)), fadeDuration_(fadeDuration) {}
    ~FakeFloatingPanel() override {
        record_->closed = true;
        record_->mouseMonitor = nullptr;
        log_.add(loop_.now(), "panel closed", record_->spec.text);
    }

    void setFrameOrigin(QPointF origin) override {
        record_->origin = origin;
        record_->centered = false;
        ++record_->moves;
    }
    void center() override {
        record_->origin.reset();
        record_->centered = true;
    }
    QRectF frame() const override { return record_->frame(); }
    void setSelection(const SelectionContent& content) override { record_->spec.selection = content; }
    void setMouseMonitor(std::function<void(const PanelMouse&)> monitor) override {
        record_->mouseMonitor = std::move(monitor);
    }
    void animateIn(double scale, double duration) override {
        record_->animatedScale = scale;
        record_->animatedDuration = duration;
        log_.add(loop_.now(), "panel shown", record_->spec.text);
    }
    void animateOut(std::function<void()> completion) override {
        record_->fading = true;
        log_.add(loop_.now(), "panel fades", record_->spec.text);
        fade_ = loop_.after(fadeDuration_, [done = std::move(completion)] {
            const auto run = done;  // the panel, and this closure with it, may be destroyed in it
            if (run) run();
        });
    }

private:
    FakeRunLoop& loop_;
    FakeEventLog& log_;
    std::shared_ptr<FakeFloatingPanels::Record> record_;
    double fadeDuration_;
    Timer fade_;
};

}  // namespace

std::unique_ptr<FloatingPanel> FakeFloatingPanels::create(const PanelSpec& spec) {
    if (!available) return nullptr;
    auto record = std::make_shared<Record>();
    record->spec = spec;
    record->scale = scale;
    records.push_back(record);
    return std::make_unique<FakeFloatingPanel>(loop_, log_, std::move(record), fadeDuration);
}

std::vector<const FakeFloatingPanels::Record*> FakeFloatingPanels::shown() const {
    std::vector<const Record*> found;
    for (const auto& record : records) {
        if (record->isShown()) found.push_back(record.get());
    }
    return found;
}

std::optional<QString> FakeFloatingPanels::shownText(PanelKind kind) const {
    const Record* found = shownPanel(kind);
    return found == nullptr ? std::nullopt : std::optional<QString>(found->spec.text);
}

bool FakeFloatingPanels::clickRow(int slot) {
    const auto shown = std::find_if(records.rbegin(), records.rend(), [](const auto& record) {
        return record->isShown() && record->spec.kind == PanelKind::choice;
    });
    if (shown == records.rend()) return false;
    const PanelSpec spec = (*shown)->spec;  // the panel may go in the callback
    const auto has = [slot](const std::vector<ChoiceRow>& rows) {
        return std::any_of(rows.begin(), rows.end(), [slot](const auto& row) { return row.slot == slot; });
    };
    if (!spec.takesMouseEvents || !spec.onSelectSlot ||
        !(has(spec.choice.agents) || has(spec.choice.presets)))
        return false;
    spec.onSelectSlot(slot);
    return true;
}

const FakeFloatingPanels::Record* FakeFloatingPanels::shownPanel(PanelKind kind) const {
    const auto found = std::find_if(records.rbegin(), records.rend(), [kind](const auto& record) {
        return record->isShown() && record->spec.kind == kind;
    });
    return found == records.rend() ? nullptr : found->get();
}

bool FakeFloatingPanels::act(PanelKind kind, PanelAction action) {
    const Record* record = shownPanel(kind);
    if (record == nullptr || !record->spec.takesMouseEvents || !record->spec.onAction) return false;
    const auto onAction = record->spec.onAction;  // the record may be forgotten in it
    onAction(action);
    return true;
}

bool FakeFloatingPanels::drag(PanelKind kind, QPointF from, const std::vector<QPointF>& over) {
    const Record* record = shownPanel(kind);
    if (record == nullptr || !record->spec.takesMouseEvents) return false;
    const auto tell = [record](PanelMouse::Kind what, QPointF where) {
        if (const auto monitor = record->mouseMonitor) monitor({what, where});
    };
    tell(PanelMouse::Kind::down, from);
    for (const QPointF& point : over)
        tell(PanelMouse::Kind::dragged, point);
    return true;
}

int FakeFloatingPanels::openCount() const {
    return static_cast<int>(
        std::count_if(records.begin(), records.end(), [](const auto& record) { return !record->closed; }));
}

}  // namespace veltrin
