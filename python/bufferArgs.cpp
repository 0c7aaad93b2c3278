#include "bufferArgs.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "sweep.h"

namespace qfbpy {

ByteBuffer::ByteBuffer(const py::handle& object, const char* name, bool writable) : name_(name) {
  if (!PyObject_CheckBuffer(object.ptr()))
    throw py::type_error(name_ + ": expected bytes, bytearray or a numpy uint8 array, got " +
                         std::string(Py_TYPE(object.ptr())->tp_name));
  const int flags = PyBUF_C_CONTIGUOUS | PyBUF_FORMAT | (writable ? PyBUF_WRITABLE : 0);
  if (PyObject_GetBuffer(object.ptr(), &view_, flags) != 0) {
    PyErr_Clear();
    throw py::value_error(name_ + (writable ? ": must be a writable C-contiguous buffer (for in_place=True)"
                                            : ": must be C-contiguous (numpy.ascontiguousarray makes a copy that is)"));
  }
  const char* format = view_.format ? view_.format : "B";
  if (view_.itemsize != 1 || (std::string(format) != "B" && std::string(format) != "=B" &&
                              std::string(format) != "<B" && std::string(format) != "|B")) {
    const std::string got = format;
    PyBuffer_Release(&view_);
    throw py::type_error(name_ + ": expected unsigned bytes (dtype uint8), got items of format '" + got + "'");
  }
}

void ByteBuffer::requireRows(std::int64_t rows, std::int64_t columns, const std::string& what) const {
  if (ndim() != 2)
    throw py::value_error(name_ + ": expected a 2-D array, one codeword per row; got " + std::to_string(ndim()) +
                          " dimension" + (ndim() == 1 ? "" : "s"));
  if (shape(1) != columns)
    throw py::value_error(name_ + ": rows of " + std::to_string(shape(1)) + " bytes; " + what + " takes " +
                          std::to_string(columns) + " bytes");
  if (rows >= 0 && shape(0) != rows)
    throw py::value_error(name_ + ": " + std::to_string(shape(0)) + " rows where " + std::to_string(rows) +
                          " are needed (one per codeword of data)");
}

std::string layoutText(const LayoutArg& layout) {
  if (const auto* text = std::get_if<std::string>(&layout)) return *text;
  std::string text;
  for (int k : std::get<std::vector<int>>(layout)) text += (text.empty() ? "" : ",") + std::to_string(k);
  return text;
}

std::string sweepText(const py::object& sweep) {
  if (sweep.is_none()) return "";
  if (py::isinstance<py::str>(sweep)) return sweep.cast<std::string>();
  if (py::isinstance<py::float_>(sweep) || py::isinstance<py::int_>(sweep))
    return flashbch::formatNumber(sweep.cast<double>());
  std::string text;
  for (const py::handle& value : sweep)
    text += (text.empty() ? "" : ",") + flashbch::formatNumber(value.cast<double>());
  return text;
}

int threadCount(int threads) {
  if (threads == 0) return static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  if (threads < 1 || threads > 1024)
    throw py::value_error("--threads: " + std::to_string(threads) + " is outside the accepted range 1 .. 1024");
  return threads;
}

void parallelRows(std::int64_t rows, int threads,
                  const std::function<void(int worker, std::int64_t begin, std::int64_t end)>& work) {
  if (rows <= 0) return;
  const int workers = static_cast<int>(std::min<std::int64_t>(threads, rows));
  if (workers <= 1) {
    work(0, 0, rows);
    return;
  }
  // Chunks small enough to balance uneven rows (uncorrectable words cost
  // more), large enough that the counter is not contended.
  const std::int64_t chunk = std::max<std::int64_t>(1, std::min<std::int64_t>(64, rows / (8 * workers)));
  std::atomic<std::int64_t> next{0};
  auto loop = [&](int worker) {
    for (;;) {
      const std::int64_t begin = next.fetch_add(chunk);
      if (begin >= rows) return;
      work(worker, begin, std::min(rows, begin + chunk));
    }
  };
  std::vector<std::thread> pool;
  for (int w = 1; w < workers; ++w) pool.emplace_back(loop, w);
  loop(0);
  for (auto& thread : pool) thread.join();
}

}  // namespace qfbpy
