// A non-owning reference to a callable, the light form of std::function: it
// holds a pointer to the callable and one to a function that calls it, so
// passing it costs two words and calling it one indirect call, as a function
// pointer does. The engines take their goal functions and integrands in this
// form, so that a caller hands over its own context in a lambda instead of
// file-scope variables. The referenced callable must outlive the reference:
// take it as a parameter, never store it.
#ifndef VELMORA_NUMERICS_FUNCTION_REF_H
#define VELMORA_NUMERICS_FUNCTION_REF_H

#include <memory>
#include <type_traits>
#include <utility>

namespace velmora {

template <class Signature>
class FunctionRef;

template <class R, class... Args>
class FunctionRef<R(Args...)> {
public:
    template <class F, class = std::enable_if_t<!std::is_same<std::decay_t<F>, FunctionRef>::value &&
                                                std::is_invocable_r<R, F&, Args...>::value>>
    FunctionRef(F&& f) noexcept  // NOLINT: converts implicitly like a function pointer
        : object(const_cast<void*>(static_cast<const void*>(std::addressof(f)))),
          call([](void* o, Args... args) -> R {
              return (*static_cast<std::add_pointer_t<std::remove_reference_t<F>>>(o))(std::forward<Args>(args)...);
          }) {}

    // A plain function pointer is held by value: it needs no object to outlive.
    FunctionRef(R (*f)(Args...)) noexcept  // NOLINT
        : object(reinterpret_cast<void*>(f)), call([](void* o, Args... args) -> R {
              return reinterpret_cast<R (*)(Args...)>(o)(std::forward<Args>(args)...);
          }) {}

    R operator()(Args... args) const { return call(object, std::forward<Args>(args)...); }

private:
    void* object;
    R (*call)(void*, Args...);
};

}  // namespace velmora

#endif
