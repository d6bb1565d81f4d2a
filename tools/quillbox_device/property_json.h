// property_json.h - a property of a record as JSON and back, without loss.
#pragma once

#include "ce/store.h"

#include <nlohmann/json.hpp>

#include <deque>
#include <string>
#include <vector>

namespace quillbox_device {

// {"id": "3a11001f", "value": ...}, with "flags" unless they are 0. The low half of the id is the type: numbers are
// numbers, times the number of 100 ns steps since 1601, texts texts, blobs hexadecimal digits. What a value can't carry
// stands as it lies in the store: "units" of a text that is no Unicode, "bits" of anything else.
[[nodiscard]] nlohmann::ordered_json toJson(const CEPROPVAL& property);

// One record on its way in: its properties, and the texts and bytes that they point to.
class RecordInput {
public:
    // Throws a Failure with half a sentence: "the value isn't a number".
    void add(const nlohmann::ordered_json& property);

    [[nodiscard]] const std::vector<CEPROPVAL>& properties() const { return properties_; }

private:
    std::vector<CEPROPVAL> properties_;
    std::deque<std::u16string> texts_;
    std::deque<std::string> blobs_;
};

}  // namespace quillbox_device
