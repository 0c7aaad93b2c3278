// quilflashbch.BCH: one shortened BCH code on packed bytes, single words and
// 2-D batches (one codeword per row) decoded by a pool of worker threads.
#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vector>

#include "bindings.h"
#include "blockLayout.h"
#include "bufferArgs.h"
#include "codecPool.h"
#include "pageImage.h"
#include "quilPackedBCH.h"

namespace qfbpy {

namespace {

using quil::PackedBCH;

// Status values are CodewordStatus, whose first three are DecodeStatus's.
static_assert(static_cast<int>(flashbch::CodewordStatus::Clean) == static_cast<int>(quil::DecodeStatus::Clean) &&
                  static_cast<int>(flashbch::CodewordStatus::Corrected) ==
                      static_cast<int>(quil::DecodeStatus::Corrected) &&
                  static_cast<int>(flashbch::CodewordStatus::Uncorrectable) ==
                      static_cast<int>(quil::DecodeStatus::Uncorrectable),
              "Status numbering");

struct WordResult {
  flashbch::CodewordStatus status;
  int correctedBits;
  std::vector<int> errorPositions;
  py::bytes data, parity;
};

struct BatchResult {
  py::array_t<std::uint8_t> status;
  py::array_t<std::int32_t> correctedBits;
  py::object data, parity;
};

// A new bytes object of count bytes, copied from `from` when not null.
py::bytes newBytes(const std::uint8_t* from, std::int64_t count) {
  PyObject* bytes = PyBytes_FromStringAndSize(reinterpret_cast<const char*>(from), static_cast<Py_ssize_t>(count));
  if (bytes == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::bytes>(bytes);
}

std::uint8_t* bytesData(const py::bytes& b) { return reinterpret_cast<std::uint8_t*>(PyBytes_AS_STRING(b.ptr())); }

class Bch {
 public:
  Bch(int dataBits, int t)
      : layout_(flashbch::makeLayout(flashbch::parseLayout(std::to_string(dataBits)), t, false)),
        pool_([dataBits, t] { return std::make_unique<PackedBCH>(dataBits, t); }) {
    auto probe = pool_.borrow();
    dataBytes_ = probe->dataBytes();
    parityBytes_ = probe->parityBytes();
  }

  int dataBits() const { return layout_.dataBits[0]; }
  int t() const { return layout_.t; }
  int parityBits() const { return layout_.parityBits(); }
  int dataBytes() const { return dataBytes_; }
  int parityBytes() const { return parityBytes_; }

  py::bytes encode(const py::object& data) {
    ByteBuffer in(data, "data");
    requireLength(in, dataBytes_, "data");
    py::bytes parity = newBytes(nullptr, parityBytes_);
    {
      py::gil_scoped_release unlocked;
      pool_.borrow()->encode(in.data(), bytesData(parity));
    }
    return parity;
  }

  WordResult decode(const py::object& data, const py::object& parity) {
    WordResult r{flashbch::CodewordStatus::Clean, 0, {}, py::bytes(), py::bytes()};
    {
      ByteBuffer d(data, "data"), p(parity, "parity");
      requireLength(d, dataBytes_, "data");
      requireLength(p, parityBytes_, "parity");
      r.data = newBytes(d.data(), dataBytes_);
      r.parity = newBytes(p.data(), parityBytes_);
    }
    int positions[flashbch::kMaxT];
    {
      py::gil_scoped_release unlocked;
      const quil::DecodeResult result = pool_.borrow()->decode(bytesData(r.data), bytesData(r.parity), positions);
      r.status = static_cast<flashbch::CodewordStatus>(result.status);
      r.correctedBits = result.correctedBits;
    }
    r.errorPositions.assign(positions, positions + r.correctedBits);
    return r;
  }

  py::array_t<std::uint8_t> encodeBatch(const py::object& data, int threads) {
    const int workers = threadCount(threads);
    ByteBuffer in(data, "data");
    in.requireRows(-1, dataBytes_, "a codeword of " + std::to_string(dataBits()) + " data bits");
    const std::int64_t rows = in.shape(0);
    py::array_t<std::uint8_t> parity({rows, static_cast<std::int64_t>(parityBytes_)});
    std::uint8_t* out = parity.mutable_data();
    auto leases = pool_.borrowMany(static_cast<int>(std::min<std::int64_t>(workers, std::max<std::int64_t>(rows, 1))));
    {
      py::gil_scoped_release unlocked;
      parallelRows(rows, workers, [&](int w, std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end; ++i) leases[w]->encode(in.data() + i * dataBytes_, out + i * parityBytes_);
      });
    }
    return parity;
  }

  BatchResult decodeBatch(const py::object& data, const py::object& parity, int threads, bool inPlace) {
    const int workers = threadCount(threads);
    BatchResult r;
    // The buffers stay exported until the end, so an in-place caller's
    // bytearray cannot be resized while the workers write into it.
    ByteBuffer din(data, "data", inPlace), pin(parity, "parity", inPlace);
    din.requireRows(-1, dataBytes_, "a codeword of " + std::to_string(dataBits()) + " data bits");
    const std::int64_t rows = din.shape(0);
    pin.requireRows(rows, parityBytes_, "the parity of t = " + std::to_string(t()));
    std::uint8_t *d = din.data(), *p = pin.data();
    if (inPlace) {
      r.data = data;
      r.parity = parity;
    } else {
      py::array_t<std::uint8_t> dcopy({rows, static_cast<std::int64_t>(dataBytes_)});
      py::array_t<std::uint8_t> pcopy({rows, static_cast<std::int64_t>(parityBytes_)});
      d = dcopy.mutable_data();
      p = pcopy.mutable_data();
      std::copy(din.data(), din.data() + din.size(), d);
      std::copy(pin.data(), pin.data() + pin.size(), p);
      r.data = dcopy;
      r.parity = pcopy;
    }
    r.status = py::array_t<std::uint8_t>(rows);
    r.correctedBits = py::array_t<std::int32_t>(rows);
    std::uint8_t* status = r.status.mutable_data();
    std::int32_t* counts = r.correctedBits.mutable_data();
    auto leases = pool_.borrowMany(static_cast<int>(std::min<std::int64_t>(workers, std::max<std::int64_t>(rows, 1))));
    {
      py::gil_scoped_release unlocked;
      parallelRows(rows, workers, [&](int w, std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end; ++i) {
          const quil::DecodeResult one = leases[w]->decode(d + i * dataBytes_, p + i * parityBytes_);
          status[i] = static_cast<std::uint8_t>(one.status);
          counts[i] = one.correctedBits;
        }
      });
    }
    return r;
  }

 private:
  void requireLength(const ByteBuffer& b, int bytes, const char* name) const {
    if (b.size() != bytes)
      throw py::value_error(std::string(name) + ": " + std::to_string(b.size()) + " bytes where " +
                            std::to_string(bytes) + " are needed (" +
                            (std::string(name) == "data" ? std::to_string(dataBits()) + " data bits"
                                                         : std::to_string(parityBits()) + " parity bits") +
                            ")");
  }

  flashbch::BlockLayout layout_;
  CodecPool<PackedBCH> pool_;
  int dataBytes_ = 0, parityBytes_ = 0;
};

}  // namespace

void bindBch(py::module_& m) {
  py::class_<WordResult>(m, "DecodeResult", "The outcome of BCH.decode for one codeword.")
      .def_readonly("status", &WordResult::status, "Status.CLEAN, Status.CORRECTED or Status.UNCORRECTABLE.")
      .def_readonly("corrected_bits", &WordResult::correctedBits, "Bits flipped (0 unless corrected).")
      .def_readonly("error_positions", &WordResult::errorPositions,
                    "Flipped codeword bits, ascending: 0 .. data_bits-1 in the data, data_bits + j for parity bit j.")
      .def_readonly("data", &WordResult::data, "The corrected data (as read when uncorrectable).")
      .def_readonly("parity", &WordResult::parity, "The corrected parity bytes.")
      .def("__repr__", [](const WordResult& r) {
        return "DecodeResult(status=" + std::string(flashbch::statusName(r.status)) +
               ", corrected_bits=" + std::to_string(r.correctedBits) + ")";
      });

  py::class_<BatchResult>(m, "BatchResult", "The outcome of BCH.decode_batch, one entry per row.")
      .def_readonly("status", &BatchResult::status, "uint8 array of Status values.")
      .def_readonly("corrected_bits", &BatchResult::correctedBits, "int32 array of bits flipped per row.")
      .def_readonly("data", &BatchResult::data, "The corrected data rows.")
      .def_readonly("parity", &BatchResult::parity, "The corrected parity rows.");

  py::class_<Bch>(m, "BCH", R"doc(
BCH(data_bits, t)

The binary BCH code over GF(2^15) (x^15 + x + 1) correcting t errors,
shortened to data_bits data bits, with 15*t parity bits: the code of every
codeword of FlashCodec. Bytes hold bits most significant first; data take
ceil(data_bits/8) bytes, parity ceil(15t/8) bytes (zero bits at the end).

Byte arguments are bytes, bytearray, memoryview or numpy uint8 arrays,
read in place. Calls release the GIL; one object may be shared by several
Python threads (each call borrows its own scratch codec from the object).
Raises ValueError for an unsupported data_bits or t.)doc")
      .def(py::init<int, int>(), py::arg("data_bits"), py::arg("t"))
      .def_property_readonly("data_bits", &Bch::dataBits)
      .def_property_readonly("t", &Bch::t)
      .def_property_readonly("parity_bits", &Bch::parityBits)
      .def_property_readonly("data_bytes", &Bch::dataBytes)
      .def_property_readonly("parity_bytes", &Bch::parityBytes)
      .def("encode", &Bch::encode, py::arg("data"), "encode(data) -> bytes: the parity bytes of one codeword's data.")
      .def("decode", &Bch::decode, py::arg("data"), py::arg("parity"),
           "decode(data, parity) -> DecodeResult: corrects a copy of one read-back codeword.")
      .def("encode_batch", &Bch::encodeBatch, py::arg("data"), py::arg("threads") = 1,
           "encode_batch(data, threads=1) -> ndarray: parity rows (n, parity_bytes) of the data rows (n, data_bytes).\n"
           "threads=0 uses every core.")
      .def("decode_batch", &Bch::decodeBatch, py::arg("data"), py::arg("parity"), py::arg("threads") = 1,
           py::arg("in_place") = false,
           "decode_batch(data, parity, threads=1, in_place=False) -> BatchResult\n\n"
           "Decodes the rows of 2-D uint8 arrays data (n, data_bytes) and parity (n, parity_bytes).\n"
           "With in_place the arrays themselves are corrected (they must be writable); otherwise copies are.\n"
           "threads=0 uses every core; results do not depend on threads.")
      .def("__repr__", [](const Bch& b) {
        return "BCH(data_bits=" + std::to_string(b.dataBits()) + ", t=" + std::to_string(b.t()) + ")";
      });
}

}  // namespace qfbpy
