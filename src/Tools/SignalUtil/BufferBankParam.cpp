// Description of a bank of named signals; see BufferBankParam.h.
#include "Tools/SignalUtil/BufferBankParam.h"

#include <algorithm>

BufferBankParam::BufferBankParam(int num_sig_) { init(num_sig_); }

BufferBankParam::BufferBankParam(const BufferBankParam& o) { copy(o); }

BufferBankParam& BufferBankParam::operator=(const BufferBankParam& o) {
  if (this != &o) copy(o);
  return *this;
}

void BufferBankParam::init(int num_sig_) {
  name = "BufferOut";
  num_sig = std::max(num_sig_, 0);
  sig_dim.reset(new int[num_sig]);
  buf_len.reset(new int[num_sig]);
  names.reset(new std::string[num_sig]);
  pFlag.reset(new bool[num_sig]);
  for (int i = 0; i < num_sig; ++i) {
    sig_dim[i] = 1;
    buf_len[i] = 1;
    names[i] = "sig" + std::to_string(i);
    pFlag[i] = true;
  }
}

void BufferBankParam::copy(const BufferBankParam& o) {
  if (this == &o) return;
  init(o.num_sig);
  name = o.name;
  std::copy(o.sig_dim.get(), o.sig_dim.get() + num_sig, sig_dim.get());
  std::copy(o.buf_len.get(), o.buf_len.get() + num_sig, buf_len.get());
  std::copy(o.names.get(), o.names.get() + num_sig, names.get());
  std::copy(o.pFlag.get(), o.pFlag.get() + num_sig, pFlag.get());
}

bool BufferBankParam::operator==(const BufferBankParam& o) const {
  if (name != o.name || num_sig != o.num_sig) return false;
  for (int i = 0; i < num_sig; ++i)
    if (sig_dim[i] != o.sig_dim[i] || buf_len[i] != o.buf_len[i] || names[i] != o.names[i] || pFlag[i] != o.pFlag[i])
      return false;
  return true;
}
