#include "blocks/median_filter/SortedBuffer.h"

#include <cmath>
#include <limits>

namespace median_filter_ns {

int SortedBuffer::locateElement(double v) const {
  int lo = 0;
  int hi = size_;
  while (lo < hi) {
    const int mid = lo + (hi - lo) / 2;
    if (buffer_[static_cast<size_t>(mid)] <= v) {
      lo = mid + 1;
    } else {
      hi = mid;
    }
  }
  return lo;
}

void SortedBuffer::insert(double v) {
  if (std::isnan(v)) {
    ++nan_count_;
    return;
  }
  if (size_ == static_cast<int>(buffer_.size()))
    buffer_.resize(buffer_.size() + kGrowth);
  const int at = locateElement(v);
  for (int k = size_; k > at; --k)
    buffer_[static_cast<size_t>(k)] = buffer_[static_cast<size_t>(k - 1)];
  buffer_[static_cast<size_t>(at)] = v;
  ++size_;
}

void SortedBuffer::remove(double v) {
  if (std::isnan(v)) {
    if (nan_count_ > 0)
      --nan_count_;
    return;
  }
  const int at = locateElement(v) - 1;
  if (at < 0 || buffer_[static_cast<size_t>(at)] != v)
    return;
  for (int k = at; k < size_ - 1; ++k)
    buffer_[static_cast<size_t>(k)] = buffer_[static_cast<size_t>(k + 1)];
  --size_;
}

void SortedBuffer::replace(double old_value, double new_value) {
  if (std::isnan(old_value)) {
    if (nan_count_ > 0)
      --nan_count_;
    insert(new_value);
    return;
  }
  if (std::isnan(new_value)) {
    remove(old_value);
    ++nan_count_;
    return;
  }
  const int old_at = locateElement(old_value) - 1;
  if (old_at < 0 || buffer_[static_cast<size_t>(old_at)] != old_value) {
    // nothing to remove: the plain insertion is what remove-then-insert gives
    insert(new_value);
    return;
  }
  const int count = locateElement(new_value);
  if (count - 1 >= old_at) {
    // the new value belongs at or above the old one's place: move the elements between
    // down by one; old_value itself is among the counted ones
    const int to = count - 1;
    for (int k = old_at; k < to; ++k)
      buffer_[static_cast<size_t>(k)] = buffer_[static_cast<size_t>(k + 1)];
    buffer_[static_cast<size_t>(to)] = new_value;
  } else {
    // below: move the elements between up by one
    for (int k = old_at; k > count; --k)
      buffer_[static_cast<size_t>(k)] = buffer_[static_cast<size_t>(k - 1)];
    buffer_[static_cast<size_t>(count)] = new_value;
  }
}

double SortedBuffer::median() const {
  if (nan_count_ > 0 || size_ == 0)
    return std::numeric_limits<double>::quiet_NaN();
  const size_t mid = static_cast<size_t>(size_ / 2);
  if (size_ % 2 == 1)
    return buffer_[mid];
  const double a = buffer_[mid - 1];
  const double b = buffer_[mid];
  if ((a < 0.0) != (b < 0.0) || std::isinf(a))
    return (a + b) / 2.0;
  return a + (b - a) / 2.0;
}

} // namespace median_filter_ns
