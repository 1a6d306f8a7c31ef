// Calls on an object that may be null.
#pragma once

#include <concepts>
#include <functional>
#include <type_traits>
#include <utility>

#include "Platform/Foundation/Protocol.h"

namespace vel {

namespace detail {

// A type that `send` can return. For a null receiver, `send` returns `R()`, which does not compile
// for a reference type.
template <class R>
concept MessageResult = !std::is_reference_v<R>;

}  // namespace detail

/// Calls `operation` on the receiver and returns the result. If the receiver is null, calls nothing
/// and returns the zero value of the result type: 0, false, null or an empty rectangle. Keeps the
/// receiver alive during the call.
template <class Receiver, class DeclaringClass, detail::MessageResult R, class... Parameters,
          class... Arguments>
  requires std::derived_from<Receiver, DeclaringClass> &&
           std::invocable<R (DeclaringClass::*)(Parameters...), Receiver&, Arguments...>
R send(Strong<Receiver> receiver, R (DeclaringClass::*operation)(Parameters...),
       Arguments&&... arguments) {
  if (receiver == nullptr) {
    return R();
  }
  return std::invoke(operation, *receiver, std::forward<Arguments>(arguments)...);
}

template <class Receiver, class DeclaringClass, detail::MessageResult R, class... Parameters,
          class... Arguments>
  requires std::derived_from<Receiver, DeclaringClass> &&
           std::invocable<R (DeclaringClass::*)(Parameters...) const, const Receiver&, Arguments...>
R send(Strong<Receiver> receiver, R (DeclaringClass::*operation)(Parameters...) const,
       Arguments&&... arguments) {
  if (receiver == nullptr) {
    return R();
  }
  return std::invoke(operation, std::as_const(*receiver), std::forward<Arguments>(arguments)...);
}

}  // namespace vel
