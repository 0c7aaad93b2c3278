// Ring buffer of one signal; see SmallTCL.h.
#include "Tools/SignalUtil/SmallTCL.h"

#include <algorithm>

namespace {
const char* const kSourcePath = "Tools/SignalUtil/SmallTCL.cpp";
}

// A ring needs one slot for head to point at, so sizes below one make one.
template <class T>
Buffer<T>::Buffer(int size_) : size(std::max(size_, 1)), head(0), data(new T[std::max(size_, 1)]()) {}

template <class T>
Buffer<T>::Buffer(const Buffer& o) : size(o.size), head(o.head), data(new T[o.size]) {
  std::copy(o.data.get(), o.data.get() + size, data.get());
}

template <class T>
Buffer<T>& Buffer<T>::operator=(const Buffer& o) {
  if (this == &o) return *this;
  data.reset(new T[o.size]);
  size = o.size;
  head = o.head;
  std::copy(o.data.get(), o.data.get() + size, data.get());
  return *this;
}

template <class T>
void Buffer<T>::push(T v) {
  head = head == size - 1 ? 0 : head + 1;
  data[head] = v;
}

template <class T>
const T& Buffer<T>::operator[](int lag) const {
  SIGNAL_UTIL_CHECK(kSourcePath, lag < size, "lag < size");
  long long index = (static_cast<long long>(head) - lag) % size;
  if (index < 0) index += size;
  return data[index];
}

template <class T>
void Buffer<T>::reset(T v) {
  std::fill(data.get(), data.get() + size, v);
  head = 0;
}

template <class T>
bool Buffer<T>::operator==(const Buffer& o) const {
  return size == o.size && head == o.head && std::equal(data.get(), data.get() + size, o.data.get());
}

template class Buffer<bool>;
template class Buffer<int>;
template class Buffer<double>;
template class Buffer<unsigned char>;
