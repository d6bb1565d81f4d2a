// slot_table.h - numbered slots for objects, and keys that stay invalid after their object was removed.
//
// A key contains the number of a slot and a counter of how often the slot has been used. So the key of a removed object
// is refused even if another object is in the slot now. find() never uses a key as an address, so it can safely check
// any number that a program passes as a handle. If several threads use a table, the callers must lock it.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace platform::kernel {

// Slots are numbered from 1. Number 0 means "none". The table never adds, finds or removes the content of slot 0, but
// the owner of the table may set it. If Sequence is std::deque, references to contents stay valid when another content
// is added.
template <class Content, template <class...> class Sequence = std::vector>
class SlotTable {
public:
    using Number = std::uint32_t;
    using Key = std::uintptr_t;

    SlotTable() { slots_.emplace_back(); }

    // Uses the slot that was emptied last, or a new slot if none is empty.
    Number add(Content content)
    {
        if (free_.empty()) {
            slots_.emplace_back();
            free_.push_back(static_cast<Number>(slots_.size() - 1));
        }
        const Number number = free_.back();
        free_.pop_back();
        slots_[number].content = std::move(content);
        slots_[number].isFilled = true;
        return number;
    }

    // `number` must be the number of a filled slot. The content of the slot becomes Content().
    Content remove(Number number)
    {
        Slot& slot = slots_[number];
        slot.use = slot.use == LastUse ? 1 : slot.use + 1;
        slot.isFilled = false;
        free_.push_back(number);
        return std::exchange(slot.content, Content());
    }

    // Returns 0 if no object has this key. No object ever has the key 0 or the key whose bits are all ones.
    Number find(Key key) const
    {
        const Key number = key & 0xFFFFFFFF;
        if (number >= slots_.size() || !slots_[number].isFilled || slots_[number].use != key >> 32)
            return 0;
        return static_cast<Number>(number);
    }

    Key keyOf(Number number) const { return (Key{slots_[number].use} << 32) | number; }

    Content& operator[](Number number) { return slots_[number].content; }
    const Content& operator[](Number number) const { return slots_[number].content; }

    bool isFilled(Number number) const { return slots_[number].isFilled; }

    // One more than the highest slot number.
    Number end() const { return static_cast<Number>(slots_.size()); }

private:
    static constexpr std::uint32_t LastUse = 0x7FFFFFFF;  // so that the bits of a key are never all ones

    struct Slot {
        Content content{};
        std::uint32_t use = 1;  // raised when the slot is emptied
        bool isFilled = false;
    };

    Sequence<Slot> slots_;
    std::vector<Number> free_;
};

}  // namespace platform::kernel
