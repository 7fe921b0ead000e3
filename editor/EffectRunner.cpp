#include "editor/EffectRunner.h"

#include "platform/drawing/Picture.h"
#include "plugin/CIFMain.h"

#include <cstdlib>
#include <optional>

namespace editor {

struct EffectRunner::Worker {
    CIFMain plugIn;
    std::optional<Effect> last;
    Counters counters;
};

EffectRunner::EffectRunner(QObject* parent) : QObject(parent), _worker(std::make_shared<Worker>())
{
}

EffectRunner::~EffectRunner() = default;

void EffectRunner::run(const Effect& effect)
{
    if (_worker->last == effect)
        return;
    foundation::PictureRef result;
    if (effect.identifier.starts_with("GLIF_")) {
        std::srand(effect.seed);
        result = _worker->plugIn.CIFGenerateLayerAttributesForImage(
            effect.identifier, effect.attributes, effect.picture);
    } else {
        result = _worker->plugIn.CIFApplyFilterAttributesForImage(
            effect.identifier, effect.attributes, effect.picture);
    }
    _worker->last = effect;
    ++_worker->counters.results;
    Q_EMIT resultDidArrive(effect, result);
}

void EffectRunner::setSight(const Sight&) {}
void EffectRunner::stop() {}

void EffectRunner::reset()
{
    _worker->last.reset();
}

bool EffectRunner::isBusy() const
{
    return false;
}

bool EffectRunner::waitForResult(int)
{
    return true;
}

EffectRunner::Counters EffectRunner::counters() const
{
    return _worker->counters;
}

} // namespace editor
