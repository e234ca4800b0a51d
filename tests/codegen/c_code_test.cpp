#include "codegen/c_code.h"
#include "codegen/filter_name.h"
#include "tests/support/source_folder.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

using namespace brisel;
namespace fs = std::filesystem;

namespace {

DesignRecord design; // large, hence static

// A filter as the record holds it, and what it does to a signal, computed from its definition.
using Signal = std::vector<double>;
using Filter = std::function<Signal(const Signal &)>;

Signal test_signal() {
  Signal x(200);
  x[0] = 1;
  unsigned noise = 12345;
  for (std::size_t i = 64; i < x.size(); i++) {
    noise = noise * 1103515245u + 12345u;
    x[i] = static_cast<int>(noise >> 16 & 0x7fff) / 16384.0 - 1;
  }
  return x;
}

// Direct difference equation: a[0] y = b * x - a[1..] * y.
Signal difference_equation(const std::vector<double> &b, const std::vector<double> &a, const Signal &x) {
  Signal y(x.size());
  for (std::size_t n = 0; n < x.size(); n++) {
    long double sum = 0;
    for (std::size_t k = 0; k < b.size() && k <= n; k++) sum += static_cast<long double>(b[k]) * x[n - k];
    for (std::size_t k = 1; k < a.size() && k <= n; k++) sum -= static_cast<long double>(a[k]) * y[n - k];
    y[n] = static_cast<double>(sum / a[0]);
  }
  return y;
}

Signal scaled(Signal x, double factor) {
  for (double &v : x) v *= factor;
  return x;
}

const Triple numerators[2] = {{0.75, 0.5, 0.25}, {0.5, -0.25, 0.125}};
const Triple denominators[2] = {{1, -0.5, 0.625}, {1, 0.75, 0.5}};

// Two sections in both section forms; scale divides the coefficients of both, as block scaling does.
void fill_sections(double scale) {
  for (SectionEntry *s : {&design.z_quantized.cascade, &design.z_quantized.parallel}) {
    s->section_count = 2;
    s->order = 4;
    s->gain = 0.375;
    s->pars = 1.25;
    for (int k = 0; k < 2; k++)
      for (int i = 0; i < 3; i++) {
        s->numerators[k][i] = numerators[k][i] / scale;
        s->denominators[k][i] = denominators[k][i] / scale;
      }
  }
}

Signal run_section(int k, const Signal &x) {
  return difference_equation({numerators[k].begin(), numerators[k].end()},
                             {denominators[k].begin(), denominators[k].end()}, x);
}
Signal run_cascade(const Signal &x) {
  return run_section(1, run_section(0, scaled(x, 0.375)));
}
Signal run_parallel(const Signal &x) {
  Signal y = scaled(x, 0.375);
  for (int k = 0; k < 2; k++) {
    const Signal s = run_section(k, x);
    for (std::size_t n = 0; n < y.size(); n++) y[n] += s[n];
  }
  return scaled(y, 1.25);
}

void iir(RealizationForm form, bool quantized, int type = 0) {
  design.selections.DesignOrAnalysisType = code(DesignMethod::iir);
  design.realization = code(form);
  design.quantization.quant = quantized;
  design.quantization.qtype = type < 2;
  design.quantization.rtype1 = type;
  design.quantization.rtype2 = type;
}

void fir(bool quantized) {
  design.selections.DesignOrAnalysisType = code(DesignMethod::window);
  design.quantization.quant = quantized;
  design.quantization.qtype = 1;
  design.fir.length = 5;
  design.fir.fir_type = 1;
  design.fir.gain_option = 1;
  design.fir.shift = -1;
  design.fir.gain = 0.5;
  for (int i = 0; i < 5; i++) design.fir.coeff[i] = std::array{0.125, -0.25, 0.75, -0.25, 0.125}[i];
}

std::string source(const std::string &path = "demo.c") {
  std::string text;
  EXPECT_EQ(format_c_code(path, design, "A. User", "Sat Nov 21 2026", "10:11:12", text), success);
  return text;
}

struct Folder {
  fs::path path = fs::temp_directory_path() / ("brisel_cgen_" + std::to_string(::getpid()));
  Folder() { fs::create_directories(path); }
  ~Folder() { fs::remove_all(path); }
};

const std::string flags = " -Wall -Wextra -pedantic -Werror -I " + source_file("codegen/support ");

Signal read_numbers(const fs::path &path) {
  Signal out;
  std::ifstream in(path);
  for (double v; in >> v;) out.push_back(v);
  return out;
}

// Compiles the source with a driver that calls the filter in blocks of 7 samples, and filters x.
Signal run_generated(const std::string &text, const std::string &prefix, const std::string &init, const char *element,
                     const std::string &compiler, const Signal &x) {
  const Folder folder;
  std::ofstream(folder.path / "filter.c") << text;
  std::ofstream driver(folder.path / "driver.c");
  driver << "#define DEFINE_SUBROUTINE\n#include \"filter.c\"\n#include \"brisel_filt.c\"\n#include <stdio.h>\n"
         << "static " << element << " x[] = {";
  driver.precision(17);
  for (const double v : x) driver << v << ",\n";
  driver << "};\nstatic " << element << " y[" << x.size() << "];\nint main(void) {\n  int i, count = " << x.size()
         << ";\n  " << init << "(&" << prefix << "_demo);\n  for (i = 0; i < count; i += 7)\n    " << prefix
         << "_demo.filter(x + i, y + i, count - i < 7 ? count - i : 7, &" << prefix
         << "_demo);\n  for (i = 0; i < count; i++) printf(\"%.17g\\n\", (double)y[i]);\n  return 0;\n}\n";
  driver.close();
  const std::string at = folder.path.string();
  const std::string build = compiler + flags + at + "/driver.c -o " + at + "/driver 2> " + at + "/log";
  EXPECT_EQ(std::system(build.c_str()), 0) << [&] {
    std::ifstream log(folder.path / "log");
    std::ostringstream all;
    all << log.rdbuf();
    return all.str();
  }();
  EXPECT_EQ(std::system((at + "/driver > " + at + "/out").c_str()), 0);
  return read_numbers(folder.path / "out");
}

struct Case {
  const char *name;
  const char *prefix;
  const char *init;
  const char *element;
  double tolerance;
  std::function<void()> prepare;
  Filter expected;
};

Filter ratio_filter = [](const Signal &x) {
  return scaled(difference_equation({0.5, 0.25, 0.125}, {1, -0.5, 0.25}, x), 3);
};

void fill_ratio() {
  RatioEntry &r = design.z_quantized.ratio;
  r.numerator_order = r.denominator_order = 2;
  r.gain = 3;
  for (int i = 0; i < 3; i++) {
    r.numerator[i] = std::array{0.5, 0.25, 0.125}[i];
    r.denominator[i] = std::array{1.0, -0.5, 0.25}[i];
  }
}

// k1 = -0.4, k2 = 0.25 give the denominator 1 - 0.5/z + 0.25/z^2; the taps follow from the backward polynomials
// 1, (-0.4, 1), (0.25, -0.5, 1): gamma2 = 0.125, gamma1 = 0.25 + 0.0625, gamma0 = 0.5 - 0.03125 + 0.4 gamma1.
void fill_lattice() {
  LatticeEntry &l = design.z_quantized.lattice;
  l.order = 2;
  l.lead = 0;
  l.gain = 3;
  l.kappa[0] = 0;
  l.kappa[1] = -0.4;
  l.kappa[2] = 0.25;
  l.gamma[2] = 0.125;
  l.gamma[1] = 0.25 + 0.0625;
  l.gamma[0] = 0.5 - 0.03125 + 0.4 * l.gamma[1];
}

const Case cases[] = {
    {"fir double", "FIR", "init_fir_dbl", "double", 1e-12, [] { fir(false); },
     [](const Signal &x) {
       return scaled(difference_equation({0.125, -0.25, 0.75, -0.25, 0.125}, {1}, x), 0.5);
     }},
    {"fir float", "FIR", "init_fir_float", "float", 1e-6, [] { fir(true); },
     [](const Signal &x) {
       return scaled(difference_equation({0.125, -0.25, 0.75, -0.25, 0.125}, {1}, x), 0.5);
     }},
    {"cascade double", "IIR", "init_biquad_dbl", "double", 1e-12,
     [] { fill_sections(1), iir(RealizationForm::cascade, false); }, run_cascade},
    {"parallel double", "IIR", "init_biquad_dbl", "double", 1e-12,
     [] { fill_sections(1), iir(RealizationForm::parallel, false); }, run_parallel},
    {"cascade transposed", "IIR", "init_biquad_float", "float", 1e-5,
     [] { fill_sections(2), iir(RealizationForm::cascade, true, 0); }, run_cascade},
    {"cascade canonic", "IIR", "init_biquad_float", "float", 1e-5,
     [] { fill_sections(2), iir(RealizationForm::cascade, true, 1); }, run_cascade},
    {"cascade 4 multiplies", "IIR", "init_biquad_float", "float", 1e-5,
     [] { fill_sections(2), iir(RealizationForm::cascade, true, 2); }, run_cascade},
    {"cascade 5 multiplies", "IIR", "init_biquad_float", "float", 1e-5,
     [] { fill_sections(1), iir(RealizationForm::cascade, true, 3); }, run_cascade},
    {"parallel scaled", "IIR", "init_biquad_float", "float", 1e-5,
     [] { fill_sections(2), iir(RealizationForm::parallel, true, 0); }, run_parallel},
    {"parallel floating", "IIR", "init_biquad_float", "float", 1e-5,
     [] { fill_sections(1), iir(RealizationForm::parallel, true, 1); }, run_parallel},
    {"ratio double", "RT2", "init_rt2_dbl", "double", 1e-12, [] { fill_ratio(), iir(RealizationForm::ratio, false); },
     ratio_filter},
    {"ratio float", "RT2", "init_rt2_float", "float", 1e-5, [] { fill_ratio(), iir(RealizationForm::ratio, true); },
     ratio_filter},
    {"lattice double", "LAT", "init_lat_dbl", "double", 1e-12,
     [] { fill_lattice(), iir(RealizationForm::lattice, false); }, ratio_filter},
    {"lattice float", "LAT", "init_lat_float", "float", 1e-5,
     [] { fill_lattice(), iir(RealizationForm::lattice, true); }, ratio_filter},
};

} // namespace

TEST(GeneratedC, FiltersAsTheDesignDoesUnderBothCompilers) {
  const Signal x = test_signal();
  for (const Case &c : cases)
    for (const char *compiler : {"gcc -std=c99", "clang -std=c99", "g++ -x c++"}) {
      c.prepare();
      const Signal y = run_generated(source(), c.prefix, c.init, c.element, compiler, x), expected = c.expected(x);
      ASSERT_EQ(y.size(), expected.size()) << c.name << ", " << compiler;
      for (std::size_t i = 0; i < y.size(); i++) ASSERT_NEAR(y[i], expected[i], c.tolerance) << c.name << " " << i;
    }
}

TEST(GeneratedC, IsAProgramThatFiltersATextFile) {
  fir(false);
  const Folder folder;
  const std::string at = folder.path.string();
  std::ofstream(folder.path / "filter.c") << source();
  const Signal x = test_signal();
  std::ofstream in(folder.path / "in");
  for (int block = 0; block < 6; block++) // more than the program's buffer of 1000
    for (const double v : x) in << v << "\n";
  in.close();
  ASSERT_EQ(std::system(("cc" + flags + at + "/filter.c -o " + at + "/program -lm").c_str()), 0);
  std::system((at + "/program " + at + "/in " + at + "/out 2> " + at + "/log").c_str());
  const Signal y = read_numbers(folder.path / "out");
  ASSERT_EQ(y.size(), 6 * x.size());
  const Signal expected = cases[0].expected(x);
  for (std::size_t i = 0; i < x.size(); i++) EXPECT_NEAR(y[i], expected[i], 1e-5); // "%f" and the input's digits
  EXPECT_NE(std::system((at + "/program " + at + "/none 2> " + at + "/log").c_str()), 1 << 8) << "0 on an open error";
}

TEST(GeneratedC, RecursiveNormalRoutineRunsTheArraysThatTheProgramSupplies) {
  // Poles 0.25 +- 0.75j and the numerator (0.75, 0.5, 0.25), brought to the form by the formulas of the header.
  const double b0 = 0.75, b1 = 0.5, b2 = 0.25, a1 = -0.5, a2 = 0.625;
  const double sigma = -a1 / 2, omega = std::sqrt(a2 - sigma * sigma), c1 = b1 - b0 * a1;
  const double c2 = -(b2 - b0 * a2 + c1 * sigma) / omega;
  fill_sections(1);
  iir(RealizationForm::cascade, true, 4);
  design.z_quantized.cascade.section_count = 1;
  std::string text = source();
  EXPECT_EQ(text.find("demo_num["), text.npos) << "the arrays are the user's";
  std::ostringstream arrays;
  arrays.precision(17);
  arrays << "float demo_num[3] = {" << b0 << "," << c1 << "," << c2 << "};\nfloat demo_den[2] = {" << sigma << ","
         << omega << "};\nfloat demo_m1[1], demo_m2[1];\n";
  const Signal x = test_signal();
  const Signal y = run_generated(arrays.str() + text, "IIR", "init_biquad_float", "float", "gcc -std=c99", x);
  const Signal expected = run_section(0, scaled(x, 0.375));
  ASSERT_EQ(y.size(), expected.size());
  for (std::size_t i = 0; i < y.size(); i++) ASSERT_NEAR(y[i], expected[i], 1e-5);
}

TEST(GeneratedC, IsByteForByteTheGoldenFile) {
  const fs::path folder = source_file("tests/codegen/golden");
  for (const Case &c : cases) {
    c.prepare();
    std::string file = std::string(c.name) + ".c";
    std::replace(file.begin(), file.end(), ' ', '-');
    if (std::getenv("BRISEL_WRITE_GOLDEN")) std::ofstream(folder / file) << source();
    std::ifstream in(folder / file);
    std::ostringstream golden;
    golden << in.rdbuf();
    EXPECT_EQ(source(), golden.str()) << file;
  }
}

TEST(GeneratedC, RefusesWhatItsStructuresCannotHold) {
  std::string text;
  const auto refused = [&] {
    return format_c_code("x.c", design, "", "", "", text) == form_not_supported && text.empty();
  };
  for (const auto form : {RealizationForm::nonlinear, RealizationForm::ladder_1, RealizationForm::ladder_2}) {
    iir(form, false);
    EXPECT_TRUE(refused()) << static_cast<int>(form);
  }
  fill_lattice();
  design.z_quantized.lattice.lead = 1;
  iir(RealizationForm::lattice, false);
  EXPECT_TRUE(refused());
  fill_sections(1);
  design.z_quantized.cascade.numerators[1][0] = 0;
  iir(RealizationForm::cascade, false);
  EXPECT_TRUE(refused()) << "b0 = 0 where the structure takes it as 1";
  iir(RealizationForm::cascade, true, 3);
  EXPECT_FALSE(refused());
  EXPECT_EQ(generate_c_code("/no folder/x.c", design, "", "", ""), cannot_create);
  for (const bool quantized : {false, true}) {
    fir(quantized);
    design.fir.coeff[1] = quantized ? 1e39 : std::nan(""); // no float, no number
    EXPECT_EQ(format_c_code("x.c", design, "", "", "", text), not_finite);
    EXPECT_EQ(text, "");
  }
}

TEST(FilterName, IsAnIdentifierFromTheLastPathComponent) {
  const struct {
    const char *path, *name;
  } rows[] = {
      {"C:\\work\\lowpass_filter_v2.c", "lowpass_filte"},
      {"/home/a b/x.c", "x"},
      {"filter.c", "filter_"},
      {"3rd order.c", "_3rd_order"},
      {"a-b.c", "a_b"},
      {"int.c", "int_"},
      {"_Atomic.c", "_Atomic_"},
      {"Frac16.h", "Frac16_"},
      {"\xc3\xa4.c", "__"},
      {".c", "_c"},
      {"", "_"},
      {"dir/.hidden.c", "_hidden"},
      {"/x.c", "x"},
      {"a.b/c", "a"},
      {"archive.tar.gz", "archive"},
  };
  for (const auto &row : rows) EXPECT_EQ(filter_name(row.path), row.name) << row.path;
}

TEST(CommentText, CannotEndTheComment) {
  EXPECT_EQ(comment_text("a*/b**/c\n%s\x01*\t/"), "a* /b** /c %s * /");
  fir(false);
  const std::string text = source("x*/int evil;/*.c");
  EXPECT_EQ(text.find("*/int evil"), text.npos);
}
