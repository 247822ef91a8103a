#include "webext/HistoryLimits.h"

#include "platform/linux/glib/Ref.h"
#include "webext/ScriptText.h"

#include <algorithm>

namespace ondrel::webext {

namespace {

// A function that takes `passed`. All that it needs of the language is taken hold of before the page can
// change it, and nothing is written where a setter of the page's could hear of it. What is measured and
// handed on is a clone: it has no code of the page's in it, and can't be another the second time.
constexpr const char* installer = R"js((passed) => {
  'use strict';
  const LARGEST_STATE = 256 << 10;
  const LONGEST_ADDRESS = 64 << 10;
  const {apply, getPrototypeOf, ownKeys} = Reflect;
  const {defineProperty, getOwnPropertyDescriptor} = Object;
  const clone = structuredClone;
  const {isView} = ArrayBuffer;
  const Exception = DOMException;
  const Visited = Set;
  const {has, add, forEach: eachOfSet} = Set.prototype;
  const {forEach: eachOfMap} = Map.prototype;
  const ofBigInt = BigInt.prototype;
  const {toString: digitsOf, valueOf: numberOf} = ofBigInt;
  const ofSet = Set.prototype;
  const ofMap = Map.prototype;
  const getter = (prototype, name) => getOwnPropertyDescriptor(prototype, name).get;
  const bufferSize = getter(ArrayBuffer.prototype, 'byteLength');
  const bufferOfArray = getter(getPrototypeOf(Int8Array.prototype), 'buffer');
  const bufferOfDataView = getter(DataView.prototype, 'buffer');
  const typeOfArray = getter(getPrototypeOf(Int8Array.prototype), Symbol.toStringTag);
  const ofBuffer = ArrayBuffer.prototype;
  const ofExpression = RegExp.prototype;
  const sourceOf = getter(ofExpression, 'source');
  const ofImage = ImageData.prototype;
  const pixelsOf = getter(ofImage, 'data');
  const ofBitmap = ImageBitmap.prototype;
  const bitmapWidth = getter(ofBitmap, 'width');
  const bitmapHeight = getter(ofBitmap, 'height');

  const tooLarge = (what) => new Exception(`The history takes no ${what}`, 'QuotaExceededError');

  const textSize = (text) => {
    const {length} = text;
    for (let i = 0; i < length && i < LARGEST_STATE; ++i) {
      if (text[i] > '\u00ff') {
        return 2 * length;
      }
    }
    return length;
  };

  // The size in bytes, or one over the limit.
  const sizeOf = (root) => {
    const seen = new Visited();
    let size = 0;
    let waiting = null;
    const wait = (value) => {
      if (typeof value === 'string') {
        size += textSize(value);
      } else if (typeof value === 'bigint') {
        size += apply(digitsOf, value, [16]).length / 2;
      } else if (typeof value === 'object' && value !== null) {
        waiting = {value, next: waiting};
      }
      size += 8;
    };
    wait(root);
    while (waiting && size <= LARGEST_STATE) {
      const {value} = waiting;
      waiting = waiting.next;
      if (apply(has, seen, [value])) {
        continue;
      }
      apply(add, seen, [value]);
      const prototype = getPrototypeOf(value);
      if (isView(value)) {
        wait(apply(apply(typeOfArray, value, []) ? bufferOfArray : bufferOfDataView, value, []));
        continue;
      }
      if (prototype === ofBuffer) {
        size += apply(bufferSize, value, []);
        continue;
      }
      if (prototype === ofBigInt) {
        wait(apply(numberOf, value, []));
        continue;
      }
      if (prototype === ofExpression) {
        wait(apply(sourceOf, value, []));
        continue;
      }
      if (prototype === ofImage) {
        wait(apply(pixelsOf, value, []));
        continue;
      }
      if (prototype === ofBitmap) {
        size += 4 * apply(bitmapWidth, value, []) * apply(bitmapHeight, value, []);
        continue;
      }
      if (prototype === ofMap) {
        apply(eachOfMap, value, [(item, key) => {
          if (size <= LARGEST_STATE) {
            wait(item);
            wait(key);
          }
        }]);
        continue;
      }
      if (prototype === ofSet) {
        apply(eachOfSet, value, [(item) => size <= LARGEST_STATE && wait(item)]);
        continue;
      }
      const keys = ownKeys(value);
      const {length} = keys;
      for (let i = 0; i < length && size <= LARGEST_STATE; ++i) {
        wait(keys[i]);
        wait(value[keys[i]]);
      }
    }
    return size;
  };

  const {prototype} = History;
  const limit = (name, original) => defineProperty(prototype, name, {
    value: {
      [name](state, unused, url = null) {
        if (arguments.length < 2) {
          return apply(original, this, arguments);
        }
        const title = `${unused}`;
        const address = url === null ? null : `${url}`;
        if (address !== null && address.length > LONGEST_ADDRESS) {
          throw tooLarge('address of that length');
        }
        const copy = typeof state === 'object' || typeof state === 'function' ? clone(state) : state;
        const size = sizeOf(copy);
        if (size > LARGEST_STATE) {
          throw tooLarge('state of that size');
        }
        apply(original, this, [copy, title, address]);
        passed(size);
      }
    }[name],
  });
  limit('pushState', prototype.pushState);
  limit('replaceState', prototype.replaceState);
})js";

using Callback = std::function<void(std::uint64_t)>;

} // namespace

void limitHistory(JSCContext* context, Callback passed) {
  const CaughtExceptions caught(context);
  const auto install = glib::adopt(jsc_context_evaluate(context, installer, -1));
  if (!install || !jsc_value_is_function(install.get()))
    return;
  const auto function = glib::adopt(jsc_value_new_function(
      context, nullptr, G_CALLBACK(+[](double bytes, Callback* callback) {
        (*callback)(static_cast<std::uint64_t>(std::max(bytes, 0.0)));
      }),
      new Callback(std::move(passed)), [](gpointer callback) { delete static_cast<Callback*>(callback); },
      G_TYPE_NONE, 1, G_TYPE_DOUBLE));
  const auto result =
      glib::adopt(jsc_value_function_call(install.get(), JSC_TYPE_VALUE, function.get(), G_TYPE_NONE));
}

} // namespace ondrel::webext
