#include "coder/fft.h"

#include "coder/FftPlanCache.h"

#include "golden_signals.h"
#include "support/numeric_compare.h"
#include "worst_error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <thread>
#include <vector>

namespace {

using vek_test::closeRelative;
using vek_test::GoldenFile;

// FFTW against Octave's FFTW and against MATLAB's radix-2/Bluestein: rounding of a few ulp
// per stage, norm-wise over the spectrum, up to 2^18 points.
constexpr double kFftTol = 1e-12;
// A naive DFT in long double is exact to far below double rounding, so FFTW must meet it
// to the accuracy FFT algorithms reach: about log2(n) ulp relative to the largest bin.
constexpr double kDirectTol = 1e-14;

coder::array<double, 2> row(const std::vector<double>& v) {
  coder::array<double, 2> a;
  a.set_size(1, static_cast<int>(v.size()));
  for (size_t k = 0; k < v.size(); ++k)
    a[static_cast<int>(k)] = v[k];
  return a;
}

// Real and imaginary parts one after the other, so that one norm-wise error covers both.
std::vector<double> flatten(const coder::array<creal_T, 2>& y) {
  std::vector<double> v;
  for (int k = 0; k < y.numel(); ++k)
    v.push_back(y[k].re);
  for (int k = 0; k < y.numel(); ++k)
    v.push_back(y[k].im);
  return v;
}

std::vector<double> join(std::vector<double> re, const std::vector<double>& im) {
  re.insert(re.end(), im.begin(), im.end());
  return re;
}

TEST(Fft, RealRowsMatchOctaveWithPaddingAndCutting) {
  const GoldenFile golden("tests/coder/golden/fft.txt");
  vek_test::WorstError worst("fft real rows against Octave");
  for (const auto& entry : golden.entries()) {
    const std::string& name = entry.first;
    if (name.rfind("re_", 0) != 0)
      continue;
    const auto sep = name.find('_', 3);
    const std::string len = name.substr(3, sep - 3);
    const int n = std::stoi(name.substr(sep + 1));
    SCOPED_TRACE(name);
    coder::array<creal_T, 2> y;
    coder::fft(row(golden["x_" + len]), n, y);
    ASSERT_EQ(y.size(0), 1);
    ASSERT_EQ(y.size(1), n);
    worst.expect(closeRelative(
        flatten(y), join(entry.second, golden["im_" + len + "_" + std::to_string(n)]), kFftTol));
  }
  coder::array<creal_T, 2> cut;
  coder::fft(row(golden["xcut"]), 6, cut);
  worst.expect(closeRelative(flatten(cut), join(golden["recut"], golden["imcut"]), kFftTol));
}

TEST(Fft, ComplexRowsForwardAndInverseMatchOctave) {
  const GoldenFile golden("tests/coder/golden/fft.txt");
  vek_test::WorstError worst("fft/ifft complex rows against Octave");
  for (int len : {1, 2, 3, 8, 13, 100, 128}) {
    const std::string s = std::to_string(len);
    SCOPED_TRACE(s);
    coder::array<creal_T, 2> z;
    z.set_size(1, len);
    for (int k = 0; k < len; ++k) {
      z[k].re = golden["zre_" + s][static_cast<size_t>(k)];
      z[k].im = golden["zim_" + s][static_cast<size_t>(k)];
    }
    coder::array<creal_T, 2> y;
    coder::fft(z, len, y);
    worst.expect(closeRelative(flatten(y), join(golden["fre_" + s], golden["fim_" + s]), kFftTol));
    coder::ifft(z, y);
    worst.expect(closeRelative(flatten(y), join(golden["ire_" + s], golden["iim_" + s]), kFftTol));
  }
}

TEST(Fft, BlockLengthsWithFourAndSixteenFoldPaddingMatchOctave) {
  const GoldenFile golden("tests/coder/golden/fft.txt");
  vek_test::WorstError worst("fft block lengths against Octave");
  for (int len : {4096, 16384}) {
    const auto x = row(vek_test::lcgSignal(7, len));
    for (int n : {len, 4 * len, 16 * len}) {
      const std::string key = std::to_string(len) + "_" + std::to_string(n);
      SCOPED_TRACE(key);
      coder::array<creal_T, 2> y;
      coder::fft(x, n, y);
      ASSERT_EQ(y.numel(), n);
      std::vector<double> re;
      std::vector<double> im;
      for (double b : golden["bins_" + key]) {
        re.push_back(y[static_cast<int>(b)].re);
        im.push_back(y[static_cast<int>(b)].im);
      }
      worst.expect(
          closeRelative(join(re, im), join(golden["bre_" + key], golden["bim_" + key]), kFftTol));
      double power = 0.0;
      for (int k = 0; k < n; ++k)
        power += y[k].re * y[k].re + y[k].im * y[k].im;
      worst.expect(closeRelative({power}, golden["bpow_" + key], kFftTol));
    }
  }
}

TEST(Fft, AgreesWithDirectDftForEveryShortLength) {
  vek_test::WorstError worst("fft against naive DFT");
  std::vector<int> lengths;
  for (int n = 1; n <= 40; ++n)
    lengths.push_back(n);
  for (int n : {97, 128, 210, 1000, 1024})
    lengths.push_back(n);
  for (int n : lengths) {
    SCOPED_TRACE(n);
    const auto xs = vek_test::lcgSignal(11 + n, n);
    coder::array<creal_T, 2> y;
    coder::fft(row(xs), n, y);
    std::vector<double> want(2 * static_cast<size_t>(n));
    const long double pi = 3.141592653589793238462643383279502884L;
    for (int k = 0; k < n; ++k) {
      long double re = 0.0L;
      long double im = 0.0L;
      for (int j = 0; j < n; ++j) {
        // The exact angle reduced modulo n first keeps the argument small.
        const long double a =
            -2.0L * pi * static_cast<long double>((static_cast<long long>(j) * k) % n) / n;
        re += xs[static_cast<size_t>(j)] * std::cos(a);
        im += xs[static_cast<size_t>(j)] * std::sin(a);
      }
      want[static_cast<size_t>(k)] = static_cast<double>(re);
      want[static_cast<size_t>(n + k)] = static_cast<double>(im);
    }
    worst.expect(closeRelative(flatten(y), want, kDirectTol));
  }
}

TEST(Fft, ShapesRoundTripAndEmptyLengths) {
  coder::array<double, 1> column;
  column.set_size(5);
  for (int k = 0; k < 5; ++k)
    column[k] = k * k - 3.0;
  coder::array<creal_T, 1> spectrum;
  coder::fft(column, 8, spectrum);
  EXPECT_EQ(spectrum.size(0), 8);
  // A real signal's spectrum is conjugate-symmetric; DC is the plain sum.
  EXPECT_DOUBLE_EQ(spectrum[0].re, -3.0 + -2.0 + 1.0 + 6.0 + 13.0);
  EXPECT_EQ(spectrum[0].im, 0.0);
  EXPECT_EQ(spectrum[3].re, spectrum[5].re);
  EXPECT_EQ(spectrum[3].im, -spectrum[5].im);

  coder::array<double, 2> col2;
  col2.set_size(5, 1);
  for (int k = 0; k < 5; ++k)
    col2[k] = column[k];
  coder::array<creal_T, 2> spec2;
  coder::fft(col2, 16, spec2);
  EXPECT_EQ(spec2.size(0), 16);
  EXPECT_EQ(spec2.size(1), 1);

  coder::array<creal_T, 1> back;
  coder::array<creal_T, 1> forward;
  coder::array<creal_T, 1> z;
  z.set_size(7);
  for (int k = 0; k < 7; ++k)
    z[k] = {std::sin(k + 0.5), std::cos(3.0 * k)};
  coder::fft(z, 7, forward);
  coder::ifft(forward, back);
  for (int k = 0; k < 7; ++k) {
    EXPECT_NEAR(back[k].re, z[k].re, 1e-15);
    EXPECT_NEAR(back[k].im, z[k].im, 1e-15);
  }

  coder::array<creal_T, 1> none;
  coder::fft(column, 0, none);
  EXPECT_EQ(none.numel(), 0);
  coder::array<double, 1> empty;
  coder::fft(empty, none);
  EXPECT_EQ(none.numel(), 0);
  // The output may be the input's own array for complex transforms.
  coder::fft(z, 7, z);
  EXPECT_DOUBLE_EQ(z[0].re, forward[0].re);
}

TEST(Fft, ThreadsPlanningNewLengthsAtOnceGetTheSameBits) {
  // The loop and a recalculation job transform at once; the first use of a length plans it.
  const std::vector<int> lengths = {3001, 3002, 3003, 4099, 5000, 6007};
  std::vector<std::vector<double>> results(8);
  std::vector<std::thread> threads;
  for (size_t t = 0; t < results.size(); ++t) {
    threads.emplace_back([&results, &lengths, t] {
      for (int n : lengths) {
        const auto x = row(vek_test::lcgSignal(5, n));
        coder::array<creal_T, 2> y;
        coder::fft(x, n, y);
        for (int k = 0; k < n; k += 97)
          results[t].push_back(y[k].re + y[k].im);
      }
    });
  }
  for (auto& th : threads)
    th.join();
  for (size_t t = 1; t < results.size(); ++t)
    EXPECT_EQ(results[t], results[0]);
}

TEST(Fft, LengthsBeyondTheKeptPlansStillTransformCorrectly) {
  // Signals of ever new lengths: past the kept plans each call plans for itself, and the
  // results stay those of the direct DFT.
  vek_test::WorstError worst("fft beyond the kept plans against naive DFT");
  auto& cache = coder::internal::FftPlanCache::instance();
  for (int n = 700; n < 700 + 2 * static_cast<int>(coder::internal::FftPlanCache::kMaxPlans); ++n) {
    const auto xs = vek_test::lcgSignal(n, n);
    coder::array<creal_T, 2> y;
    coder::fft(row(xs), n, y);
    if (n % 16 != 0)
      continue;
    SCOPED_TRACE(n);
    std::vector<double> want;
    const long double pi = 3.141592653589793238462643383279502884L;
    for (int k : {0, 1, n / 3, n - 1}) {
      long double re = 0.0L;
      for (int j = 0; j < n; ++j) {
        re += xs[static_cast<size_t>(j)] *
              std::cos(-2.0L * pi * static_cast<long double>((static_cast<long long>(j) * k) % n) /
                       n);
      }
      want.push_back(static_cast<double>(re));
    }
    worst.expect(closeRelative({y[0].re, y[1].re, y[n / 3].re, y[n - 1].re}, want, 1e-13));
  }
  EXPECT_LE(cache.size(coder::internal::FftPlanCache::Kind::RealForward),
            coder::internal::FftPlanCache::kMaxPlans);
}

} // namespace
