// Root finding for error locators; see the header for the method and why
// it accepts exactly the locators that a search over all positions accepts.
#include "bch/locatorRoots.h"

#include <algorithm>
#include <cmath>

#include "bch/fieldTables.h"

namespace {

int trimmedDegree(const uint16_t* a, int deg) {
  while (deg >= 0 && a[deg] == 0) --deg;
  return deg;
}

// The position p with root = alpha^-p.
int rootPosition(const FieldTables& field, uint16_t root) { return (field.order() - field.log(root)) % field.order(); }

}  // namespace

LocatorRoots::LocatorRoots(const FieldTables& f, int t_, KernelLevel level)
    : field(f),
      t(t_),
      monic(t_ + 1),
      squareLogs(static_cast<size_t>(t_ + 1) * (t_ + 1)),
      frobenius(static_cast<size_t>(f.m() + 1) * (t_ + 1)),
      trace(static_cast<size_t>(f.m()) * (t_ + 1)),
      scratchA(2 * static_cast<size_t>(t_) + 2),
      scratchB(2 * static_cast<size_t>(t_) + 2),
      quotient(2 * static_cast<size_t>(t_) + 2),
      pool(static_cast<size_t>(t_ + 1) * (t_ + 1)),
      poolDegree(t_ + 1),
      poolBasis(t_ + 1),
      divisorLogs(t_ + 1) {
  if (!VectorChien::supports(level)) return;
  search = std::make_unique<VectorChien>(f, t_);
  if (SplitCheck::supports(level)) splitTest = std::make_unique<SplitCheck>(f, t_);
  searchBelowLength.assign(t_ + 1, 0);
  for (int d = 3; d <= t_; ++d) searchBelowLength[d] = static_cast<int>(1800 * std::pow(d, 0.75));
}

bool LocatorRoots::rootOfLinear(const uint16_t* f, int n, int* positions, int& found) const {
  const int p = rootPosition(field, f[0]);
  if (p >= n) return false;
  positions[found++] = p;
  return true;
}

bool LocatorRoots::rootsOfQuadratic(const uint16_t* f, int n, int* positions, int& found) const {
  // x^2 + a x + b with x = a y becomes y^2 + y = b / a^2.
  const uint16_t a = f[1], b = f[0];
  if (a == 0) return false;  // a double root
  const uint16_t c = field.mul(b, field.inverse(field.mul(a, a)));
  const int y = field.quadraticRoot(c);
  if (y < 0) return false;
  const int p1 = rootPosition(field, field.mul(a, static_cast<uint16_t>(y)));
  const int p2 = rootPosition(field, field.mul(a, static_cast<uint16_t>(y ^ 1)));
  if (p1 >= n || p2 >= n) return false;
  positions[found++] = p1;
  positions[found++] = p2;
  return true;
}

void LocatorRoots::squareModulo(const uint16_t* p, uint16_t* out) const {
  std::fill(out, out + d, 0);
  for (int j = 0; j < d; ++j) {
    if (p[j] == 0) continue;
    const int logSquare = 2 * field.log(p[j]);
    if (2 * j < d) {
      out[2 * j] ^= field.exp(logSquare % field.order());
    } else {
      const int32_t* q = &squareLogs[static_cast<size_t>(j) * d];
      const int ls = logSquare % field.order();
      for (int i = 0; i < d; ++i) out[i] ^= field.expOfLogSum(q[i], ls);
    }
  }
}

int LocatorRoots::remainder(uint16_t* a, int degA, const uint16_t* f, int degF) {
  // The divisor's logarithms once, then one table look-up per product; the
  // quotient digit a_i / f_degF is a difference of logarithms. The digit of
  // the next step depends only on the coefficient just below the current
  // one, which is updated first and kept in a register: the steps form a
  // chain, and this keeps the chain short.
  int32_t* fLog = divisorLogs.data();
  for (int j = 0; j < degF; ++j) fLog[j] = field.log(f[j]);
  const int leadLog = field.log(f[degF]);
  if (degA < degF) return trimmedDegree(a, degA);
  if (degF == 0) {
    std::fill(a, a + degA + 1, 0);
    return -1;
  }
  uint16_t lead = a[degA];
  for (int i = degA; i >= degF; --i) {
    uint16_t* row = a + i - degF;
    if (lead == 0) {
      lead = row[degF - 1];
      continue;
    }
    int lc = field.log(lead) - leadLog;
    if (lc < 0) lc += field.order();
    lead = row[degF - 1] ^ field.expOfLogSum(fLog[degF - 1], lc);
    for (int j = 0; j + 1 < degF; ++j) row[j] ^= field.expOfLogSum(fLog[j], lc);
    row[degF - 1] = lead;
    a[i] = 0;
  }
  return trimmedDegree(a, degF - 1);
}

// Euclid on a and b (both overwritten); result points at the monic gcd.
int LocatorRoots::gcd(uint16_t* a, int degA, uint16_t* b, int degB, uint16_t*& result) {
  while (degB >= 0) {
    degA = remainder(a, degA, b, degB);
    std::swap(a, b);
    std::swap(degA, degB);
  }
  const uint16_t inv = field.inverse(a[degA]);
  for (int i = 0; i <= degA; ++i) a[i] = field.mul(a[i], inv);
  result = a;
  return degA;
}

void LocatorRoots::traceModulo(int k, uint16_t* out) {
  // Tr(alpha^k x) = sum over i of alpha^(k 2^i) x^(2^i), each x^(2^i) mod Lambda.
  std::fill(out, out + d, 0);
  int64_t e = k;
  for (int i = 0; i < field.m(); ++i, e = (2 * e) % field.order()) {
    const uint16_t* p = &frobenius[static_cast<size_t>(i) * d];
    for (int j = 0; j < d; ++j) out[j] ^= field.mulByLog(p[j], static_cast<int>(e));
  }
}

bool LocatorRoots::splitFactors(int deg, int n, int* positions, int& found) {
  const int m = field.m();
  const size_t slot = static_cast<size_t>(d) + 1;
  // Traces Tr(alpha^k x) mod Lambda, made when first needed.
  size_t tracesMade = 0;
  std::copy(monic.begin(), monic.begin() + deg + 1, pool.begin());
  poolDegree[0] = deg;
  poolBasis[0] = 0;
  int depth = 1;
  while (depth > 0) {
    --depth;
    uint16_t* g = &pool[depth * slot];
    const int e = poolDegree[depth];
    int k = poolBasis[depth];
    if (e == 1) {
      if (!rootOfLinear(g, n, positions, found)) return false;
      continue;
    }
    if (e == 2) {
      if (!rootsOfQuadratic(g, n, positions, found)) return false;
      continue;
    }
    bool split = false;
    for (; k < m && !split; ++k) {
      while (static_cast<int>(tracesMade) <= k) {
        traceModulo(static_cast<int>(tracesMade), &trace[tracesMade * d]);
        ++tracesMade;
      }
      // h = Tr(alpha^k x) mod g, then u = gcd(g, h).
      uint16_t* h = scratchA.data();
      std::copy(&trace[static_cast<size_t>(k) * d], &trace[static_cast<size_t>(k) * d] + d, h);
      const int degH = remainder(h, d - 1, g, e);
      if (degH < 0) continue;  // every root has trace 0: no split with this beta
      uint16_t* gCopy = scratchB.data();
      std::copy(g, g + e + 1, gCopy);
      uint16_t* u = nullptr;
      const int degU = gcd(gCopy, e, h, degH, u);
      if (degU <= 0 || degU >= e) continue;
      // v = g / u, exact; then g's slot takes u and the next slot takes v.
      std::fill(quotient.begin(), quotient.begin() + (e - degU + 1), 0);
      std::vector<uint16_t>& work = (u == scratchA.data()) ? scratchB : scratchA;
      std::copy(g, g + e + 1, work.begin());
      for (int i = e; i >= degU; --i) {
        const uint16_t c = work[i];
        if (c == 0) continue;
        quotient[i - degU] = c;
        const int lc = field.log(c);
        for (int j = 0; j <= degU; ++j) work[i - degU + j] ^= field.mulByLog(u[j], lc);
      }
      std::copy(u, u + degU + 1, g);
      poolDegree[depth] = degU;
      poolBasis[depth] = k + 1;
      uint16_t* v = &pool[(depth + 1) * slot];
      std::copy(quotient.begin(), quotient.begin() + (e - degU + 1), v);
      poolDegree[depth + 1] = e - degU;
      poolBasis[depth + 1] = k + 1;
      depth += 2;
      split = true;
    }
    // Distinct roots always separate within the basis; this guards a field
    // that is not one.
    if (!split) return false;
  }
  return true;
}

bool LocatorRoots::find(const uint16_t* lambda, int degree, int n, int* positions) {
  d = degree;
  if (d < 1 || lambda[0] == 0) return false;
  if (search && d <= t && n < searchBelowLength[d]) {
    if (splitTest && !splitTest->splits(lambda, d)) return false;
    return search->find(lambda, d, n, positions, splitTest && splitTest->tests(d));
  }
  const uint16_t inv = field.inverse(lambda[d]);
  for (int i = 0; i <= d; ++i) monic[i] = field.mul(lambda[i], inv);
  int found = 0;
  bool ok;
  if (d == 1) {
    ok = rootOfLinear(monic.data(), n, positions, found);
  } else if (d == 2) {
    ok = rootsOfQuadratic(monic.data(), n, positions, found);
  } else {
    // Q_j = x^(2j) mod Lambda, kept as logarithms: from x^d = sum_{i<d} f_i x^i
    // one factor x at a time.
    std::vector<uint16_t>& x = scratchA;
    std::copy(monic.begin(), monic.begin() + d, x.begin());
    int power = d;
    for (int j = 0; j < d; ++j) {
      int32_t* q = &squareLogs[static_cast<size_t>(j) * d];
      if (2 * j < d) {
        std::fill(q, q + d, field.logZero());
        q[2 * j] = 0;
        continue;
      }
      for (; power < 2 * j; ++power) {
        const uint16_t top = x[d - 1];
        for (int i = d - 1; i >= 1; --i) x[i] = x[i - 1];
        x[0] = 0;
        if (top != 0) {
          const int lt = field.log(top);
          for (int i = 0; i < d; ++i) x[i] ^= field.mulByLog(monic[i], lt);
        }
      }
      for (int i = 0; i < d; ++i) q[i] = field.log(x[i]);
    }
    // P_0 = x, P_(i+1) = P_i^2; all d roots lie in the field iff P_m = x.
    const int m = field.m();
    std::fill(frobenius.begin(), frobenius.begin() + d, 0);
    frobenius[1] = 1;
    for (int i = 0; i < m; ++i)
      squareModulo(&frobenius[static_cast<size_t>(i) * d], &frobenius[static_cast<size_t>(i + 1) * d]);
    const uint16_t* last = &frobenius[static_cast<size_t>(m) * d];
    for (int i = 0; i < d; ++i)
      if (last[i] != (i == 1 ? 1 : 0)) return false;
    ok = splitFactors(d, n, positions, found);
  }
  if (!ok || found != d) return false;
  std::sort(positions, positions + d);
  return true;
}
