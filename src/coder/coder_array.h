// The dynamic column-major array that every math block passes around, with the sizing and
// capacity rules of the MATLAB Coder runtime, so that block code sized and filled the
// MATLAB way behaves the same here.
#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>

namespace coder {

// A rank-N array of T with extents of type SZ, stored contiguously in column-major order.
// The array owns its buffer (copies are deep) unless it is a view made by `reshape` or
// `set`; a view never frees the buffer and must not outlive the array it looks into.
template <typename T, typename SZ, int N> class array_base {
  static_assert(N >= 1, "an array has at least one dimension");

public:
  using value_type = T;
  using size_type = SZ;

  array_base() {
    for (int d = 0; d < N; ++d)
      size_[d] = 0;
  }

  array_base(const array_base& other) { copyFrom(other); }

  array_base(array_base&& other) noexcept
      : data_(other.data_), capacity_(other.capacity_), owner_(other.owner_) {
    std::copy(other.size_, other.size_ + N, size_);
    other.data_ = nullptr;
    other.capacity_ = 0;
    other.owner_ = true;
    for (int d = 0; d < N; ++d)
      other.size_[d] = 0;
  }

  array_base& operator=(const array_base& other) {
    if (this != &other) {
      // Assigning into an array makes it an owner of a buffer of its own.
      const SZ n = other.numel();
      if (!owner_) {
        data_ = nullptr;
        capacity_ = 0;
        owner_ = true;
      }
      for (int d = 0; d < N; ++d)
        size_[d] = 0;
      ensureCapacity(n);
      std::copy(other.data_, other.data_ + n, data_);
      std::copy(other.size_, other.size_ + N, size_);
    }
    return *this;
  }

  array_base& operator=(array_base&& other) noexcept {
    if (this != &other) {
      release();
      data_ = other.data_;
      capacity_ = other.capacity_;
      owner_ = other.owner_;
      std::copy(other.size_, other.size_ + N, size_);
      other.data_ = nullptr;
      other.capacity_ = 0;
      other.owner_ = true;
      for (int d = 0; d < N; ++d)
        other.size_[d] = 0;
    }
    return *this;
  }

  ~array_base() { release(); }

  // Changes the extents; the first min(old, new) elements keep their flat positions and
  // the elements beyond the old count are NOT initialised: fill them after sizing. A
  // negative extent counts as 0.
  template <typename... Dims> void set_size(Dims... dims) {
    static_assert(sizeof...(Dims) == static_cast<size_t>(N), "one extent per dimension");
    SZ extents[N] = {static_cast<SZ>(dims)...};
    // A negative extent (a count computed from bad data) sizes the array empty.
    for (int d = 0; d < N; ++d)
      extents[d] = extents[d] < 0 ? 0 : extents[d];
    SZ n = 1;
    for (int d = 0; d < N; ++d)
      n *= extents[d];
    ensureCapacity(n);
    std::copy(extents, extents + N, size_);
  }

  // Grows the buffer so that it holds n elements: the capacity starts from the old one, is
  // raised to at least 16 and doubled until it suffices; from 0x40000000 on it becomes
  // 0x7fffffff. The current elements are kept.
  void ensureCapacity(SZ n) {
    if (n <= capacity_)
      return;
    SZ cap = capacity_;
    if (cap < 16)
      cap = 16;
    while (cap < n) {
      if (cap > 1073741823) {
        cap = 2147483647;
      } else {
        cap = static_cast<SZ>(cap * 2);
      }
    }
    T* fresh = new T[static_cast<size_t>(cap)];
    const SZ keep = numel();
    if (data_ != nullptr && keep > 0)
      std::copy(data_, data_ + std::min(keep, n), fresh);
    release();
    data_ = fresh;
    capacity_ = cap;
    owner_ = true;
  }

  // Makes this array a view of an outside buffer with the given extents; the buffer is
  // neither copied nor freed.
  template <typename... Dims> void set(T* buffer, Dims... dims) {
    static_assert(sizeof...(Dims) == static_cast<size_t>(N), "one extent per dimension");
    release();
    const SZ extents[N] = {static_cast<SZ>(dims)...};
    for (int d = 0; d < N; ++d)
      size_[d] = extents[d] < 0 ? 0 : extents[d];
    data_ = buffer;
    capacity_ = numel();
    owner_ = false;
  }

  // A view of the same elements with other extents (same element count expected). The
  // result looks into this array's buffer: resizing this array invalidates it.
  template <typename... Dims>
  array_base<T, SZ, static_cast<int>(sizeof...(Dims))> reshape(Dims... dims) const {
    array_base<T, SZ, static_cast<int>(sizeof...(Dims))> view;
    view.set(data_, dims...);
    return view;
  }

  SZ numel() const {
    SZ n = 1;
    for (int d = 0; d < N; ++d)
      n *= size_[d];
    return n;
  }
  // Extent of dimension d, counted from 0.
  SZ size(int d) const { return size_[d]; }
  const SZ* size() const { return size_; }
  SZ capacity() const { return capacity_; }
  bool is_owner() const { return owner_; }
  bool empty() const { return numel() == 0; }

  T* data() { return data_; }
  const T* data() const { return data_; }
  T* begin() { return data_; }
  T* end() { return data_ + numel(); }
  const T* begin() const { return data_; }
  const T* end() const { return data_ + numel(); }

  // Flat, column-major element access from 0.
  T& operator[](SZ i) { return data_[i]; }
  const T& operator[](SZ i) const { return data_[i]; }
  T& at(SZ i) { return data_[i]; }
  const T& at(SZ i) const { return data_[i]; }

  // Element of row r and column c of a matrix: flat index r + c * rows.
  T& operator()(SZ r, SZ c) {
    static_assert(N == 2, "row and column index a matrix");
    return data_[r + c * size_[0]];
  }
  const T& operator()(SZ r, SZ c) const {
    static_assert(N == 2, "row and column index a matrix");
    return data_[r + c * size_[0]];
  }

private:
  template <typename, typename, int> friend class array_base;

  void copyFrom(const array_base& other) {
    for (int d = 0; d < N; ++d)
      size_[d] = 0;
    const SZ n = other.numel();
    ensureCapacity(n);
    if (n > 0)
      std::copy(other.data_, other.data_ + n, data_);
    std::copy(other.size_, other.size_ + N, size_);
  }

  void release() {
    if (owner_)
      delete[] data_;
    data_ = nullptr;
    capacity_ = 0;
    owner_ = true;
  }

  T* data_ = nullptr;
  SZ size_[N];
  SZ capacity_ = 0;
  bool owner_ = true;
};

// The array of the math blocks: extents are signed 32-bit counts. A MATLAB row vector is
// array<T, 2> of size (1, n); a column vector is array<T, 1> of size (n).
template <typename T, int N> class array : public array_base<T, int, N> {
public:
  array() = default;
  array(const array_base<T, int, N>& other) : array_base<T, int, N>(other) {}
  array(array_base<T, int, N>&& other) noexcept : array_base<T, int, N>(std::move(other)) {}
  array& operator=(const array_base<T, int, N>& other) {
    array_base<T, int, N>::operator=(other);
    return *this;
  }
  array& operator=(array_base<T, int, N>&& other) noexcept {
    array_base<T, int, N>::operator=(std::move(other));
    return *this;
  }
};

} // namespace coder
