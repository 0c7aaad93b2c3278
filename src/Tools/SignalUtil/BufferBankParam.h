// BufferBankParam: the description of a bank of named signals shared by the
// buffer banks and the signal banks: the bank name (the prefix of every file
// the bank writes) and, per signal, its dimension (components per sample),
// its history length, its name and whether it is printed.
//
// The per-signal arrays are public so that callers fill them directly after
// construction; no index is checked, a caller keeps i below num_sig.
#pragma once

#include <memory>
#include <string>

class BufferBankParam {
 public:
  // num_sig signals (a negative count makes none): dimension 1, length 1,
  // names "sig0", "sig1", ..., all printed; bank name "BufferOut".
  explicit BufferBankParam(int num_sig);
  BufferBankParam(const BufferBankParam& o);
  BufferBankParam& operator=(const BufferBankParam& o);
  ~BufferBankParam() = default;

  // Reallocates for num_sig signals with the defaults above.
  void init(int num_sig);
  // Deep copy of every field.
  void copy(const BufferBankParam& o);

  bool operator==(const BufferBankParam& o) const;
  bool operator!=(const BufferBankParam& o) const { return !(*this == o); }

  int get_num_sig() const { return num_sig; }
  int get_sig_dim(int i) const { return sig_dim[i]; }
  int get_buf_len(int i) const { return buf_len[i]; }
  std::string get_name(int i) const { return names[i]; }
  bool get_pFlag(int i) const { return pFlag[i]; }
  void set_buf_len(int i, int len) { buf_len[i] = len; }

  std::string name;
  int num_sig = 0;
  std::unique_ptr<int[]> sig_dim;
  std::unique_ptr<int[]> buf_len;
  std::unique_ptr<std::string[]> names;
  std::unique_ptr<bool[]> pFlag;
};
