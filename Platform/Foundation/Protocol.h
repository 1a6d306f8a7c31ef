// Protocols: abstract classes whose operations may be optional.
#pragma once

#include <bitset>
#include <cstddef>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel {

/// A reference that keeps its object alive. The reference may be null.
template <class T>
using Strong = std::shared_ptr<T>;

/// A reference that does not keep its object alive. Its `lock` returns null after the object is
/// destroyed.
template <class T>
using Weak = std::weak_ptr<T>;

/// The root of all protocols: the operations of every object.
class VEL_EXPORT NSObjectProtocol : public NonCopyable {
 public:
  virtual ~NSObjectProtocol() = default;

  /// The name of the object's class. The template `Class` in NSObject.h implements this operation.
  [[nodiscard]] virtual std::string_view className() const = 0;
  /// Returns true if the objects are equal; each class defines what this means. Returns false for
  /// null.
  [[nodiscard]] virtual bool isEqual(const NSObjectProtocol* other) const = 0;
};

/// Says which optional operations of a protocol an object responds to: one bit for each optional
/// operation, in the order in which the protocol lists them.
using OperationSet = std::bitset<8>;

/// A list of operations, as member function pointers.
template <auto... Operation>
struct Operations {};

/// The base of a protocol with optional operations. The protocol gives each optional operation a
/// default body and lists it:
///
///     template <class Adopter>
///     using Optional = Operations<&Adopter::first, &Adopter::second>;
///
/// `Self` is the protocol itself, so each protocol has its own base class. A class that adopts
/// several protocols therefore has one `respondingOperations` for each protocol.
template <class Self>
class Protocol : public virtual NSObjectProtocol {
 public:
  /// The optional operations that the object responds to. In the template `Adopts` below, this
  /// function returns the operations that the adopting class overrides. A class that decides at run
  /// time which operations it responds to overrides this function.
  [[nodiscard]] virtual OperationSet respondingOperations() const = 0;
};

namespace detail {

// A different type for each operation. The functions below compare these types, because pointers to
// virtual member functions cannot be compared at compile time.
template <auto Operation>
struct Constant {};

template <auto Operation, auto... Listed>
consteval std::size_t indexOf(Operations<Listed...>) {
  std::size_t index = 0;
  const bool isFound =
      ((std::is_same_v<Constant<Operation>, Constant<Listed>> || (++index, false)) || ...);
  return isFound ? index : OperationSet().size();
}

// Both lists contain the optional operations: `Declared` as members of the protocol, `Adopted` as
// members of the adopter. If the adopter does not override an operation, both lists contain the
// same pointer, because the adopter's member is the protocol's member.
template <auto... Declared, auto... Adopted>
constexpr OperationSet overriddenOperations(Operations<Declared...>, Operations<Adopted...>) {
  unsigned long bits = 0;
  unsigned index = 0;
  ((bits |= (std::is_same_v<Constant<Declared>, Constant<Adopted>> ? 0UL : 1UL) << index++), ...);
  return {bits};
}

template <class P>
concept HasOptionalOperations = requires { typename P::template Optional<P>; };

template <class T>
struct ProtocolOf;
template <class R, class P, class... A>
struct ProtocolOf<R (P::*)(A...)> {
  using Type = P;
};
template <class R, class P, class... A>
struct ProtocolOf<R (P::*)(A...) const> {
  using Type = P;
};

}  // namespace detail

/// A base class through which the class `Adopter` adopts the protocol P. The template `Class` in
/// NSObject.h derives from it.
template <class Adopter, class P>
class Adopts : public P {};

template <class Adopter, detail::HasOptionalOperations P>
class Adopts<Adopter, P> : public P {
 public:
  [[nodiscard]] OperationSet respondingOperations() const override {
    static_assert(std::is_final_v<Adopter>,
                  "a class that adopts a protocol with optional operations must be final: the "
                  "overrides of a subclass would not be found");
    return detail::overriddenOperations(typename P::template Optional<P>(),
                                        typename P::template Optional<Adopter>());
  }
};

/// Returns true if the object responds to the optional operation:
/// `respondsTo<&P::operation>(delegate)`. Returns false for null.
template <auto Operation, class P>
[[nodiscard]] bool respondsTo(const Strong<P>& object) {
  using Declaring = typename detail::ProtocolOf<decltype(Operation)>::Type;
  constexpr auto index =
      detail::indexOf<Operation>(typename Declaring::template Optional<Declaring>());
  static_assert(index < OperationSet().size(),
                "the protocol does not list this operation as optional");
  return object != nullptr &&
         static_cast<const Declaring&>(*object).respondingOperations().test(index);
}

/// Casts the object to a protocol or class P. Returns null if the object does not adopt the
/// protocol or is not an object of the class.
template <class P, class T>
[[nodiscard]] Strong<P> as(const Strong<T>& object) {
  return std::dynamic_pointer_cast<P>(object);
}

/// Returns true if the object's class declares that it adopts P. A class that has P's operations
/// but does not declare P does not conform to it.
template <class P, class T>
[[nodiscard]] bool conformsTo(const Strong<T>& object) {
  return dynamic_cast<const P*>(object.get()) != nullptr;
}

}  // namespace vel
