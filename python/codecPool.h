// CodecPool: the codec objects of one Python codec, lent to one thread at a
// time.
//
// The C++ codecs keep scratch space, so an object serves one thread at a
// time. A Python codec holds a pool of them: a call borrows one (made on
// first need) for its duration, so calls from several Python threads, and
// the workers of a batch call, each run on their own. Only the lending
// takes the pool's lock; the coding itself runs unlocked and without the
// GIL. The pool keeps what it has made, at most one object per thread that
// has ever run at once.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace qfbpy {

template <class Codec>
class CodecPool {
 public:
  explicit CodecPool(std::function<std::unique_ptr<Codec>()> make) : make_(std::move(make)) {}

  class Lease {
   public:
    Lease(CodecPool& pool, std::unique_ptr<Codec> codec) : pool_(&pool), codec_(std::move(codec)) {}
    ~Lease() { pool_->giveBack(std::move(codec_)); }
    Lease(Lease&&) = default;
    Lease& operator=(Lease&&) = delete;
    Codec& operator*() const { return *codec_; }
    Codec* operator->() const { return codec_.get(); }

   private:
    CodecPool* pool_;
    std::unique_ptr<Codec> codec_;
  };

  Lease borrow() {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      if (!idle_.empty()) {
        std::unique_ptr<Codec> codec = std::move(idle_.back());
        idle_.pop_back();
        return Lease(*this, std::move(codec));
      }
    }
    return Lease(*this, make_());
  }

  // count leases at once, for the workers of a batch call.
  std::vector<Lease> borrowMany(int count) {
    std::vector<Lease> leases;
    leases.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) leases.push_back(borrow());
    return leases;
  }

 private:
  void giveBack(std::unique_ptr<Codec> codec) {
    if (!codec) return;
    std::lock_guard<std::mutex> lock(mutex_);
    idle_.push_back(std::move(codec));
  }

  std::function<std::unique_ptr<Codec>()> make_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<Codec>> idle_;
};

}  // namespace qfbpy
