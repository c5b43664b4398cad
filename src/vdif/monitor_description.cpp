#include "vdif/monitor_description.h"

#include <algorithm>
#include <array>
#include <numeric>

static constexpr std::string_view VDIF_ID = "VDIF"; // the first bytes of every image
static constexpr std::size_t VDIF_HEADER_SIZE = 116, VDIF_LIMITS_SIZE = 64, VDIF_TIMING_SIZE = 72;

std::shared_ptr<const MonitorDescription> defaultDescription;
std::shared_ptr<const MonitorDescription> currentDescription;
std::string stringPool;

MonitorDescription makeDescription() {
    MonitorDescription description;
    description.image = VDIF_ID;
    description.image.resize(VDIF_HEADER_SIZE);
    setField(description, VDIF_HEADER_BLOCK, HeaderField::LimitsOffset, VDIF_HEADER_SIZE);
    return description;
}

void setField(MonitorDescription &description, std::size_t block, VdifField field,
              std::uint64_t value) {
    for (std::size_t byte = 0; byte < field.width; byte++, value >>= 8)
        description.image[block + field.offset + byte] = static_cast<char>(value & 0xff);
}

VdifBlock headerBlock(const MonitorDescription &description) {
    return VdifBlock(description.image).substr(VDIF_HEADER_BLOCK, VDIF_HEADER_SIZE);
}

static std::size_t limitsOffset(const MonitorDescription &description) {
    return fieldValue(headerBlock(description), HeaderField::LimitsOffset);
}

std::optional<VdifBlock> limitsBlock(const MonitorDescription &description) {
    if (fieldValue(headerBlock(description), HeaderField::LimitsCount) == 0)
        return std::nullopt;
    return VdifBlock(description.image).substr(limitsOffset(description), VDIF_LIMITS_SIZE);
}

std::size_t timingCount(const MonitorDescription &description) {
    const auto limits = limitsBlock(description);
    return limits ? fieldValue(*limits, LimitsField::TimingCount) : 0;
}

VdifBlock timingRecord(const MonitorDescription &description, std::size_t index) {
    const std::size_t first = limitsOffset(description) + VDIF_LIMITS_SIZE;
    return VdifBlock(description.image).substr(first + index * VDIF_TIMING_SIZE, VDIF_TIMING_SIZE);
}

std::size_t addLimits(MonitorDescription &description) {
    const std::size_t block = description.image.size();
    description.image.resize(block + VDIF_LIMITS_SIZE);
    setField(description, VDIF_HEADER_BLOCK, HeaderField::LimitsCount, 1);
    return block;
}

std::size_t addTiming(MonitorDescription &description) {
    static constexpr std::array<char, VDIF_TIMING_SIZE> EMPTY{};
    return addTiming(description, VdifBlock(EMPTY.data(), EMPTY.size()));
}

std::size_t addTiming(MonitorDescription &description, VdifBlock record) {
    const std::size_t block = description.image.size();
    description.image.append(record);
    setField(description, limitsOffset(description), LimitsField::TimingCount,
             timingCount(description) + 1);
    return block;
}

// What record numbers are sorted by.
static auto nameOf(const MonitorDescription &description) {
    return [&description](std::uint32_t number) {
        return timingName(timingRecord(description, number));
    };
}

// By number, because records move as the image grows; stable, so that of equal names the first
// comes first.
void indexTimings(MonitorDescription &description) {
    auto &numbers = description.timingsByName;
    numbers.resize(timingCount(description));
    std::iota(numbers.begin(), numbers.end(), 0);
    std::ranges::stable_sort(numbers, {}, nameOf(description));
}

std::optional<VdifBlock> findTiming(const MonitorDescription &description, std::string_view name) {
    const auto &numbers = description.timingsByName;
    const auto found = std::ranges::lower_bound(numbers, name, {}, nameOf(description));
    if (found == numbers.end() || nameOf(description)(*found) != name)
        return std::nullopt;
    return timingRecord(description, *found);
}

std::uint32_t addString(std::string_view text) {
    if (stringPool.empty())
        stringPool.push_back('\0'); // at offset 0, which fields that were never set refer to
    const std::size_t offset = stringPool.size();
    stringPool.append(text);
    stringPool.push_back('\0');
    return static_cast<std::uint32_t>(offset);
}

std::string_view stringAt(std::uint64_t offset) {
    const std::string_view strings = stringPool;
    const std::string_view text = strings.substr(std::min<std::size_t>(offset, strings.size()));
    return text.substr(0, text.find('\0'));
}

std::string_view timingName(VdifBlock timing) {
    return stringAt(fieldValue(timing, TimingField::Preadjustedtimingname));
}
