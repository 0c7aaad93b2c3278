// Buffer<T>: a fixed-length ring holding the most recent values of one scalar
// signal. head is the slot of the newest value; the value pushed lag steps ago
// sits in slot (head - lag) mod size, so a look-back costs one index
// computation and pushing never moves data.
//
// The file also names the consistency check the signal banks use (see
// Tools/failedCheck.h).
#pragma once

#include <memory>

#include "Tools/failedCheck.h"

#define SIGNAL_UTIL_CHECK(source, condition, text) TOOLS_CHECK(source, condition, text)

template <class T>
class Buffer {
 public:
  // size zeroed slots (at least one, so that head always has a slot), head
  // at slot 0.
  explicit Buffer(int size);
  Buffer(const Buffer& o);
  // Takes over the other's size, head and every slot.
  Buffer& operator=(const Buffer& o);
  ~Buffer() = default;

  void push(T v);
  // The value pushed lag steps ago (lag 0 = newest); aborts unless lag < size.
  // A negative lag counts modulo the size: lag -1 is the oldest slot.
  const T& operator[](int lag) const;
  void reset(T v);
  void reset_ptr() { head = 0; }

  bool operator==(const Buffer& o) const;
  bool operator!=(const Buffer& o) const { return !(*this == o); }

  int get_size() const { return size; }
  int get_head() const { return head; }

 private:
  int size;
  int head;
  std::unique_ptr<T[]> data;
};
