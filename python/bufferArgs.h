// Arguments of the Python module: byte strings through the buffer protocol,
// thread counts, and the row-parallel loop the batch calls run on.
//
// A byte argument is any object exporting a C-contiguous buffer of unsigned
// bytes (item format "B"): bytes, bytearray, memoryview, array('B'), numpy
// uint8. It is read where it lies, never copied; the export also keeps a
// bytearray or an array from being resized while the GIL is released.
// Other item types raise TypeError, a non-contiguous view ValueError.
#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace qfbpy {

namespace py = pybind11;

// A layout as Python gives it: the command line's --layout text, or a list
// of data bit counts; as --layout text.
using LayoutArg = std::variant<std::string, std::vector<int>>;
std::string layoutText(const LayoutArg& layout);

class ByteBuffer {
 public:
  ByteBuffer(const py::handle& object, const char* name, bool writable = false);
  ~ByteBuffer() { PyBuffer_Release(&view_); }
  ByteBuffer(const ByteBuffer&) = delete;
  ByteBuffer& operator=(const ByteBuffer&) = delete;

  std::uint8_t* data() const { return static_cast<std::uint8_t*>(view_.buf); }
  std::int64_t size() const { return view_.len; }
  int ndim() const { return view_.ndim; }
  std::int64_t shape(int axis) const { return view_.shape ? view_.shape[axis] : view_.len; }
  // Throws ValueError unless the buffer is rows x columns (rows < 0: any).
  void requireRows(std::int64_t rows, std::int64_t columns, const std::string& what) const;

 private:
  Py_buffer view_{};
  std::string name_;
};

// A sweep as Python gives it: the command line's text ("13.9:0.2:14.9"), a
// number, or numbers; as the command line's text ("" for None).
std::string sweepText(const py::object& sweep);

// The cell, model file, page and P/E and retention sweeps of the NAND
// channel, into the options of `flashbch nand` or `flashbch simulate`.
template <typename Options>
void setNandPage(Options& o, const std::string& cell, const py::object& model, const std::string& page,
                 const py::object& pe, const py::object& retention) {
  o.cell = cell;
  o.model = model.is_none() ? "" : py::str(model).cast<std::string>();
  o.page = page;
  o.pe = sweepText(pe);
  o.retention = sweepText(retention);
}

// threads = 0 is every core; otherwise 1 .. 1024, as the command line's
// --threads. Throws ValueError with the command line's message.
int threadCount(int threads);

// Calls work(worker, begin, end) over [0, rows) in chunks, from `threads`
// threads (the caller's own when threads is 1). worker < threads identifies
// the thread, for per-thread state. Run without the GIL.
void parallelRows(std::int64_t rows, int threads,
                  const std::function<void(int worker, std::int64_t begin, std::int64_t end)>& work);

}  // namespace qfbpy
