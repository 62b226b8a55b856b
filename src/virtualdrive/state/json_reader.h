// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace kelvane::virtualdrive {

/// Reads the fields of a JSON object that nobody vouches for. The first field that is missing, of
/// another type or out of its bounds is remembered as the error; what is read after that is the
/// lower bound, "", false or empty.
///
/// Used by the two files that read the disc folder's descriptions only: JSON appears in no other
/// header.
class JsonReader {
 public:
  /// `object` is borrowed; it may be anything, also no object. `error` is where the first complaint
  /// goes.
  JsonReader(const nlohmann::json& object, std::string* error) : object_(object), error_(error) {
    if (!object.is_object()) complain("is not an object");
  }

  std::int32_t integer(const char* name, std::int32_t lowest, std::int32_t highest) {
    const auto* field = find(name);
    if (field == nullptr) return lowest;
    if (!field->is_number_integer()) return complain(name, "is not an integer"), lowest;
    const bool tooLarge = field->is_number_unsigned() &&
                          field->get<std::uint64_t>() > static_cast<std::uint64_t>(INT32_MAX);
    const auto value = tooLarge ? std::int64_t{INT32_MAX} : field->get<std::int64_t>();
    if (tooLarge || value < lowest || value > highest) {
      return complain(name, "is out of range"), lowest;
    }
    return static_cast<std::int32_t>(value);
  }

  bool boolean(const char* name) {
    const auto* field = find(name);
    if (field == nullptr) return false;
    if (!field->is_boolean()) return complain(name, "is neither true nor false"), false;
    return field->get<bool>();
  }

  std::string text(const char* name) {
    const auto* field = find(name);
    if (field == nullptr) return {};
    if (!field->is_string()) return complain(name, "is not a text"), std::string{};
    return field->get<std::string>();
  }

  /// An array of at most `most` elements.
  std::vector<nlohmann::json> list(const char* name, std::size_t most) {
    const auto* field = find(name);
    if (field == nullptr) return {};
    if (!field->is_array()) return complain(name, "is not a list"), std::vector<nlohmann::json>{};
    if (field->size() > most) return complain(name, "is too long"), std::vector<nlohmann::json>{};
    return {field->begin(), field->end()};
  }

  bool has(const char* name) const { return object_.is_object() && object_.contains(name); }
  const nlohmann::json& at(const char* name) const { return object_.at(name); }

  void complain(const char* name, const char* what) {
    complain(("“" + std::string(name) + "” " + what).c_str());
  }

 private:
  const nlohmann::json* find(const char* name) {
    if (!object_.is_object()) return nullptr;
    const auto found = object_.find(name);
    if (found != object_.end()) return &*found;
    complain(name, "is missing");
    return nullptr;
  }

  void complain(const char* what) {
    if (error_->empty()) *error_ = what;
  }

  const nlohmann::json& object_;
  std::string* error_;
};

}  // namespace kelvane::virtualdrive
