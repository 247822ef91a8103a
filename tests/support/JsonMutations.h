#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace ondrel::support {

// Calls with the whole value each time after one of its nodes has become something else or is gone.
class JsonMutations {
 public:
  explicit JsonMutations(boost::json::value value) : whole_(std::move(value)) {}

  void forEach(const std::function<void(const boost::json::value& mutated)>& call) { visit(whole_, call); }

 private:
  using Call = std::function<void(const boost::json::value&)>;

  void visit(boost::json::value& node, const Call& call) {
    static const std::vector<boost::json::value> replacements{nullptr,
                                                              true,
                                                              0,
                                                              -1,
                                                              3.5,
                                                              1e300,
                                                              UINT64_MAX,
                                                              "",
                                                              "other",
                                                              boost::json::array(),
                                                              boost::json::array{nullptr},
                                                              boost::json::array{boost::json::array()},
                                                              boost::json::object(),
                                                              boost::json::object{{"B1", nullptr}}};
    const boost::json::value saved = node;
    for (const auto& replacement : replacements) {
      node = replacement;
      call(whole_);
    }
    node = saved;
    if (auto* object = node.if_object())
      for (const auto& [key, value] : saved.get_object()) {
        object->erase(key);
        call(whole_);
        *object = saved.get_object();
        visit(object->at(key), call);
      }
    else if (auto* array = node.if_array())
      for (std::size_t i = 0; i < saved.get_array().size(); ++i) {
        array->erase(array->begin() + static_cast<std::ptrdiff_t>(i));
        call(whole_);
        *array = saved.get_array();
        visit(array->at(i), call);
      }
  }

  boost::json::value whole_;
};

} // namespace ondrel::support
