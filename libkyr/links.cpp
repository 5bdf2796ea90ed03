#include "libkyr/links.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "libkyr/text.h"

namespace {

/// What callers can loop and take memory by.
bool isSound(const SeisCounts& counts) {
  constexpr int kEndless = std::numeric_limits<int>::max();
  return counts.records >= -1 && counts.records < kEndless && counts.tracesPerRecord >= 0 &&
         counts.tracesPerRecord < kEndless && counts.samples >= 0 && counts.samples <= kMaxSamples;
}

/// Calls `use` with every source of a record, those that wait included.
template <typename Use>
void forEachSource(KyrDatasets& datasets, const Use& use) {
  for (auto& [number, waiting] : datasets.waiting) use(waiting);
  for (OpenLink& input : datasets.inputs.links) use(input.owned);
}

}  // namespace

Link OpenLink::open(OwnedSource opened) {
  static int last = 0;
  owned = std::move(opened);
  link = {++last};
  return link;
}

int OpenLink::close() {
  link = {};
  output = nullptr;
  const OwnedSource closing = std::move(owned);
  return closing.source ? guarded([&] { return closing.source->close(); }) : kyrOk;
}

OpenLink* LinkSide::freePlace(int number) {
  if (number < 0 || number >= announced) return nullptr;
  const auto index = static_cast<std::size_t>(number);
  if (index >= links.size()) links.resize(index + 1);
  links[index].close();
  return &links[index];
}

bool LinkSide::uses(const char* path) const {
  return std::any_of(
      links.begin(), links.end(),
      [path](const OpenLink& open) { return open.source() != nullptr && open.source()->uses(path); });
}

KyrDatasets* datasetsOf(ProcessRecord* procRecord) {
  if (procRecord->datasets == nullptr) procRecord->datasets = new KyrDatasets;
  return procRecord->datasets;
}

OpenLink* findLink(const ProcessRecord* procRecord, Link link) {
  if (procRecord == nullptr || procRecord->datasets == nullptr || !IsLinkValid(link)) return nullptr;
  for (LinkSide* side : {&procRecord->datasets->inputs, &procRecord->datasets->outputs})
    for (OpenLink& open : side->links)
      if (open.link.value == link.value) return &open;
  return nullptr;
}

TraceSource* sourceOf(const ProcessRecord* procRecord, Link link) {
  const OpenLink* const open = findLink(procRecord, link);
  return open != nullptr ? open->source() : nullptr;
}

// ---- sources of a process record ----------------------------------------------------------------------------------

int RegisterSource(ProcessRecord* procRecord, int inputNumber, std::unique_ptr<TraceSource> source) {
  if (procRecord == nullptr || source == nullptr || inputNumber < 0) return kyrBadCall;
  return guarded([&] {
    const SeisCounts counts = seisOrgCounts(source->org());
    if (!isSound(counts)) {
      ProcessConsole(procRecord, formatText("  *** Error: nobody can read %d records of %d traces of %d samples.",
                                            counts.records, counts.tracesPerRecord, counts.samples)
                                     .c_str());
      return kyrBadCall;
    }
    OwnedSource& waiting = datasetsOf(procRecord)->waiting[inputNumber];
    waiting = {};
    waiting.source = std::move(source);
    waiting.wantsOwner = true;
    return kyrOk;
  });
}

void HoldSources(ProcessRecord* procRecord, const std::shared_ptr<void>& owner) {
  if (procRecord == nullptr || procRecord->datasets == nullptr) return;
  forEachSource(*procRecord->datasets, [&](OwnedSource& owned) {
    if (std::exchange(owned.wantsOwner, false)) owned.owner = owner;
  });
}

void DropSources(ProcessRecord* procRecord, const std::shared_ptr<void>& owner) {
  if (procRecord == nullptr || procRecord->datasets == nullptr) return;
  std::erase_if(procRecord->datasets->waiting, [&](const auto& waiting) { return waiting.second.owner == owner; });
}
