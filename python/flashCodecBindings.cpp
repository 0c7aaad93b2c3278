// quilflashbch.FlashCodec: whole flash blocks in the stored layout, the
// command line's page encode and decode (the same PageCodec, thresholds and
// report totals) on numpy arrays, the blocks shared among worker threads.
#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <optional>
#include <vector>

#include "bindings.h"
#include "blockLayout.h"
#include "bufferArgs.h"
#include "codecPool.h"
#include "pageImage.h"

namespace qfbpy {

namespace {

using flashbch::BlockLayout;
using flashbch::BlockReport;
using flashbch::PageCodec;

struct PageResult {
  py::array_t<std::uint8_t> data;
  py::array_t<std::uint8_t> status;           // (blocks, codewords)
  py::array_t<std::int32_t> correctedBits;    // (blocks, codewords)
  py::array_t<std::int32_t> zeroBits;         // (blocks, codewords)
  py::array_t<bool> scrubRecommended;         // (blocks,)
  py::array_t<bool> uncorrectable;            // (blocks,)
  py::array_t<std::int32_t> maxCorrectedBits;  // (blocks,)
  flashbch::DecodeRules rules;
  flashbch::ImageSummary summary;
};

class FlashCodec {
 public:
  FlashCodec(const LayoutArg& layout, int t, int byteSwap, int bitSwap)
      : layout_(flashbch::makeLayout(flashbch::parseLayout(layoutText(layout)), t, true)), order_{byteSwap, bitSwap}, pool_([this] {
          return std::make_unique<PageCodec>(layout_, order_);
        }) {
    flashbch::checkBitOrder(order_, layout_);
    pool_.borrow();  // builds the codes once, before the first call
  }

  const BlockLayout& layout() const { return layout_; }
  std::int64_t dataBytes() const { return layout_.blockDataBits() / 8; }
  std::int64_t imageBytes() const { return layout_.blockStoredBits() / 8; }
  const flashbch::BitOrder& order() const { return order_; }

  py::array_t<std::uint8_t> encode(const py::object& data, int threads) {
    const int workers = threadCount(threads);
    ByteBuffer in(data, "data");
    const std::int64_t blocks = flashbch::countBlocks("data", in.size(), dataBytes());
    py::array_t<std::uint8_t> image(blocks * imageBytes());
    std::uint8_t* out = image.mutable_data();
    auto leases = pool_.borrowMany(static_cast<int>(std::min<std::int64_t>(workers, blocks)));
    {
      py::gil_scoped_release unlocked;
      parallelRows(blocks, workers, [&](int w, std::int64_t begin, std::int64_t end) {
        for (std::int64_t b = begin; b < end; ++b)
          leases[w]->encodeBlock(in.data() + b * dataBytes(), out + b * imageBytes());
      });
    }
    return image;
  }

  PageResult decode(const py::object& image, std::optional<int> scrubThreshold, std::optional<int> erasedThreshold,
                    int threads) {
    const int workers = threadCount(threads);
    PageResult r;
    r.rules = flashbch::decodeRules(layout_, scrubThreshold.value_or(-1), erasedThreshold.value_or(-1));
    ByteBuffer in(image, "image");
    const std::int64_t blocks = flashbch::countBlocks("image", in.size(), imageBytes());
    const std::int64_t codewords = layout_.codewords();
    r.data = py::array_t<std::uint8_t>(blocks * dataBytes());
    std::uint8_t* out = r.data.mutable_data();
    std::vector<BlockReport> reports(static_cast<size_t>(blocks));
    auto leases = pool_.borrowMany(static_cast<int>(std::min<std::int64_t>(workers, blocks)));
    {
      py::gil_scoped_release unlocked;
      parallelRows(blocks, workers, [&](int w, std::int64_t begin, std::int64_t end) {
        for (std::int64_t b = begin; b < end; ++b)
          reports[static_cast<size_t>(b)] =
              leases[w]->decodeBlock(in.data() + b * imageBytes(), out + b * dataBytes(), r.rules.erasedThreshold);
      });
    }
    r.status = py::array_t<std::uint8_t>({blocks, codewords});
    r.correctedBits = py::array_t<std::int32_t>({blocks, codewords});
    r.zeroBits = py::array_t<std::int32_t>({blocks, codewords});
    r.scrubRecommended = py::array_t<bool>(blocks);
    r.uncorrectable = py::array_t<bool>(blocks);
    r.maxCorrectedBits = py::array_t<std::int32_t>(blocks);
    auto status = r.status.mutable_unchecked<2>();
    auto corrected = r.correctedBits.mutable_unchecked<2>();
    auto zeros = r.zeroBits.mutable_unchecked<2>();
    for (std::int64_t b = 0; b < blocks; ++b) {
      const BlockReport& block = reports[static_cast<size_t>(b)];
      r.summary.add(block, r.rules);
      for (std::int64_t i = 0; i < codewords; ++i) {
        const auto& c = block.codewords[static_cast<size_t>(i)];
        status(b, i) = static_cast<std::uint8_t>(c.status);
        corrected(b, i) = c.correctedBits;
        zeros(b, i) = c.zeroBits;
      }
      r.scrubRecommended.mutable_at(b) = r.rules.scrubRecommended(block);
      r.uncorrectable.mutable_at(b) = block.hasUncorrectable();
      r.maxCorrectedBits.mutable_at(b) = block.maxCorrected();
    }
    return r;
  }

 private:
  BlockLayout layout_;
  flashbch::BitOrder order_;
  CodecPool<PageCodec> pool_;
};

}  // namespace

void bindFlashCodec(py::module_& m) {
  py::class_<PageResult>(m, "PageDecodeResult", R"doc(
The outcome of FlashCodec.decode: the data and a report per codeword and
per block, with the totals of the command line's decode report.)doc")
      .def_readonly("data", &PageResult::data, "The decoded data, blocks * data_bytes bytes (uint8).")
      .def_readonly("status", &PageResult::status, "Status values, uint8 (blocks, codewords).")
      .def_readonly("corrected_bits", &PageResult::correctedBits, "Bits corrected, int32 (blocks, codewords).")
      .def_readonly("zero_bits", &PageResult::zeroBits,
                    "Zeros among each codeword's stored data and parity bits, int32 (blocks, codewords).")
      .def_readonly("scrub_recommended", &PageResult::scrubRecommended,
                    "Per block: its largest correction reached scrub_threshold (bool).")
      .def_readonly("uncorrectable", &PageResult::uncorrectable, "Per block: a codeword was uncorrectable (bool).")
      .def_readonly("max_corrected_bits", &PageResult::maxCorrectedBits, "Per block: the largest correction (int32).")
      .def_property_readonly("scrub_threshold", [](const PageResult& r) { return r.rules.scrubThreshold; })
      .def_property_readonly("erased_threshold", [](const PageResult& r) { return r.rules.erasedThreshold; })
      .def_property_readonly(
          "summary",
          [](const PageResult& r) {
            py::dict totals;
            for (const auto& [name, value] : r.summary.fields()) totals[name] = value;
            return totals;
          },
          "Totals: blocks, codewords, clean, corrected, erased, uncorrectable, corrected_bits, "
          "max_corrected_bits, scrub_recommended_blocks.")
      .def("__repr__", [](const PageResult& r) { return "PageDecodeResult(" + r.summary.describe() + ")"; });

  py::class_<FlashCodec>(m, "FlashCodec", R"doc(
FlashCodec(layout, t, byte_swap=0, bit_swap=0)

Whole flash blocks as the codec stores them: each codeword its data bytes,
its 15*t parity bits and zero bits up to a whole byte. layout is the command
line's --layout text ("4x8192", "8192,8192,4096") or a list of data bit
counts (multiples of 8). byte_swap and bit_swap are the controller orders of
--byte-swap and --bit-swap (0: none). Encoding and decoding give exactly the
bytes and reports of `flashbch encode` and `flashbch decode`, including the
erased-page and scrub rules.

Calls release the GIL and may come from several Python threads; threads=
shares the blocks of one call among worker threads (0: every core).
Raises ValueError with the command line's message for a bad layout, t,
swap, threshold or partial block.)doc")
      .def(py::init<const LayoutArg&, int, int, int>(), py::arg("layout"),
           py::arg("t"), py::arg("byte_swap") = 0, py::arg("bit_swap") = 0)
      .def_property_readonly("layout", [](const FlashCodec& c) { return c.layout().describe(); })
      .def_property_readonly("data_bits", [](const FlashCodec& c) { return c.layout().dataBits; })
      .def_property_readonly("t", [](const FlashCodec& c) { return c.layout().t; })
      .def_property_readonly("codewords", [](const FlashCodec& c) { return c.layout().codewords(); })
      .def_property_readonly("data_bytes", &FlashCodec::dataBytes, "Data bytes per block.")
      .def_property_readonly("image_bytes", &FlashCodec::imageBytes, "Stored bytes per block.")
      .def("encode", &FlashCodec::encode, py::arg("data"), py::arg("threads") = 1,
           "encode(data, threads=1) -> ndarray: the block images (uint8) of whole blocks of data.")
      .def("decode", &FlashCodec::decode, py::arg("image"), py::arg("scrub_threshold") = py::none(),
           py::arg("erased_threshold") = py::none(), py::arg("threads") = 1,
           "decode(image, scrub_threshold=None, erased_threshold=None, threads=1) -> PageDecodeResult\n\n"
           "Decodes whole block images. A codeword with at most erased_threshold zeros (default t) is an\n"
           "erased page: its data come out as all ones. A block whose largest correction reaches\n"
           "scrub_threshold (default ceil(3t/4)) is recommended for scrubbing.")
      .def("__repr__", [](const FlashCodec& c) {
        return "FlashCodec('" + c.layout().describe() + "', t=" + std::to_string(c.layout().t) +
               (c.order().byteSwapWordBits ? ", byte_swap=" + std::to_string(c.order().byteSwapWordBits) : "") +
               (c.order().bitSwapGroupBits ? ", bit_swap=" + std::to_string(c.order().bitSwapGroupBits) : "") + ")";
      });
}

}  // namespace qfbpy
