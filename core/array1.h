// A 1-based array of numbers, the only data structure the windows hand around.
// resize() replaces the content whole with zeros, as every array is sized
// before each use; first() is the element that crosses into Tarnic.dll.
#pragma once

#include <cassert>
#include <span>
#include <vector>

namespace tarnic {

template <class T> class Array1 {
  public:
    Array1() = default;
    explicit Array1(int count) { resize(count); }

    void resize(int count) { values_.assign(static_cast<std::size_t>(count > 0 ? count : 0), T{}); }
    void clear() { values_.clear(); }
    int count() const { return static_cast<int>(values_.size()); }
    bool empty() const { return values_.empty(); }

    T& operator()(int i) {
        assert(i >= 1 && i <= count());
        return values_[static_cast<std::size_t>(i - 1)];
    }
    const T& operator()(int i) const {
        assert(i >= 1 && i <= count());
        return values_[static_cast<std::size_t>(i - 1)];
    }
    T& first() {
        assert(!values_.empty());
        return values_.front();
    }
    std::span<T> span() { return values_; }
    std::span<const T> span() const { return values_; }
    std::vector<T>& vector() { return values_; }
    const std::vector<T>& vector() const { return values_; }
    bool operator==(const Array1&) const = default;

  private:
    std::vector<T> values_;
};

} // namespace tarnic
