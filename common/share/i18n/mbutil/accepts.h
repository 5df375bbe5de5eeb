#ifndef ZVUTIL_MBUTIL_ACCEPTS_H
#define ZVUTIL_MBUTIL_ACCEPTS_H

#include "../jaconv/bytes.h"

namespace zv {

// Whether a search ends at a place that it has found. Refers to a function object that outlives
// the search.
class Accepts {
public:
    template <class Function>
    explicit Accepts(const Function& function)
        : function_(&function), call_([](const void* f, const Byte* p) {
              return (*static_cast<const Function*>(f))(p);
          }) {}
    bool operator()(const Byte* p) const { return call_(function_, p); }

private:
    const void* function_;
    bool (*call_)(const void*, const Byte*);
};

} // namespace zv

#endif
