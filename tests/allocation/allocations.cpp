#include "tests/allocation/allocations.h"

#include <cstdlib>
#include <new>

namespace fieldline::test {

Allocations& Heap() {
  static Allocations heap{.paused = true};
  return heap;
}

namespace {

void* Allocate(std::size_t size) {
  Allocations& heap = Heap();
  if (!heap.paused) {
    if (heap.fail) return nullptr;
    ++heap.made;
    ++heap.alive;
  }
  return std::malloc(size ? size : 1);
}

void Free(void* p) {
  if (p && !Heap().paused) --Heap().alive;
  std::free(p);
}

}  // namespace
}  // namespace fieldline::test

void* operator new(std::size_t size) {
  if (void* p = fieldline::test::Allocate(size)) return p;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return fieldline::test::Allocate(size); }
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return fieldline::test::Allocate(size); }
void operator delete(void* p) noexcept { fieldline::test::Free(p); }
void operator delete(void* p, std::size_t) noexcept { fieldline::test::Free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { fieldline::test::Free(p); }
void operator delete[](void* p) noexcept { fieldline::test::Free(p); }
void operator delete[](void* p, std::size_t) noexcept { fieldline::test::Free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { fieldline::test::Free(p); }
