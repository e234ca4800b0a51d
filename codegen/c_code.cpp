#include "codegen/c_code.h"

#include "codegen/filter_name.h"
#include "engine/files/text_file.h"

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <span>

namespace brisel {

namespace {

// What the cases differ in.
struct Target {
  const char *prefix;    // FIR, IIR, RT2, LAT
  const char *structure; // structure type
  const char *init;
  const char *routine;
  bool is_float;
  std::string name;
  mutable bool finite = true; // of every value written so far, in its type

  const char *element() const { return is_float ? "float" : "double"; }
};

// A value as an initializer: doubles to 17 digits, floats with the suffix of a float literal.
std::string value(const Target &t, double v) {
  const double largest = t.is_float ? std::numeric_limits<float>::max() : std::numeric_limits<double>::max();
  t.finite = t.finite && std::fabs(v) <= largest;
  return t.is_float ? formatf("% 18.12eF", v) : formatf("% 24.16e", v);
}

// An array: the last element closes it. `label` gives the comment of element i.
void append_array(std::string &out, const Target &t, const char *suffix, int size_width, std::span<const double> values,
                  const std::function<std::string(std::size_t)> &label) {
  appendf(out, "%s %s_%s[%*d] = {\n", t.element(), t.name.c_str(), suffix, size_width, static_cast<int>(values.size()));
  for (std::size_t i = 0; i < values.size(); i++) {
    const bool last = i + 1 == values.size();
    out += "  " + value(t, values[i]) + (last ? "}; " : ",  ") + "/* " + label(i) + " */\n";
    if (last) out += "\n";
  }
}

void append_line(std::string &out, std::string_view text) {
  out += text;
  out += '\n';
}

const std::string asterisks(76, '*');

void append_preamble(std::string &out, const Target &t, const std::string &path, const std::string &user,
                     const std::string &date, const std::string &time) {
  const std::string variable = t.prefix + ("_" + t.name);
  append_line(out, "/" + std::string(75, '*'));
  append_line(out, asterisks);
  append_line(out, "*   File: " + comment_text(path));
  append_line(out, "*   Created by " + comment_text(user) + " at " + date + " " + time);
  append_line(out, "*   C Code Generator - Version 4.0  ");
  append_line(out, asterisks);
  append_line(out, "*  Code Fragment to implement filter");
  append_line(out, "*");
  append_line(out, "*  The functions defined in 'brisel_filt.c' must be compiled and linked in.");
  append_line(out, "*    This can be accomplished by either #include \"brisel_filt.c\"");
  append_line(out, "*    or by separately compiling and linking 'brisel_filt.c'");
  append_line(out, "*");
  append_line(out, "*** following is actual code fragment");
  append_line(out, std::string("*  extern ") + t.structure + " " + variable + ";");
  append_line(out, "*");
  append_line(out, std::string("*  ") + t.init + " (&" + variable + ");  // initialize filter structure ");
  append_line(out, "*");
  const std::string call = "*  " + variable + ".filter ( x, y, n, &" + variable + ");";
  append_line(out, call + "  // x is an array of input samples");
  const std::string aligned = "*" + std::string(call.size() - 1, ' ');
  append_line(out, aligned + "  // y is an array of output samples");
  append_line(out, aligned + "  // n is the number of samples");
  append_line(out, aligned + "  // &" + variable + " points to the filter structure");
  append_line(out, asterisks);
  append_line(out, "*  This is a complete program which can be compiled and run to test the filter.");
  append_line(out, "*  It reads samples from a text file and writes the filtered samples to another.");
  append_line(out, "*  To use this file as a part of a larger program, leave the test program out");
  append_line(out, "*  by defining the following name before this file is compiled:");
  append_line(out, "*  #define DEFINE_SUBROUTINE");
  append_line(out, asterisks);
  append_line(out, asterisks + "/");
  out += '\n';
  append_line(out, "/* brisel_cgen.h contains definitions of filter structures and function prototypes */");
  append_line(out, "#include \"brisel_cgen.h\"\n");
  append_line(out, "/* filter functions are in files 'brisel_filt.c'  */\n");
}

void append_test_program(std::string &out, const Target &t) {
  const std::string variable = t.prefix + ("_" + t.name);
  const char *letters = t.is_float ? "f" : "lf";
  append_line(out, "/* call the following function first and normally only once */");
  append_line(out, std::string("/* ") + t.init + " (&" + variable + ")  */");
  append_line(out, "/*   where &" + variable + " is a pointer to the " + t.structure + " */");
  append_line(out, "/*   structure defining the filter */\n\n");
  append_line(out, "/* call the following function to filter n samples */");
  append_line(out, "/* " + variable + ".filter (pIn, pOut, int n, &" + variable + "); */\n");
  append_line(out, "/*   where pIn is a pointer to an array of input samples */");
  append_line(out, "/*         pOut is a pointer to an array of output samples */");
  append_line(out, "/*         n is the number of samples to be filtered */");
  append_line(out, "/*         &" + variable + " is a pointer to the filter structure */\n");
  append_line(out, "#ifndef DEFINE_SUBROUTINE\n");
  append_line(out, R"(/* The following is a test program for the filter.
   It reads input samples from the file "in" and writes the filtered
   samples to the file "out"; both names are given on the command line.
   Without names the standard input and the standard output are used.

   Both are text files of ASCII floating point values, one per line,
   e.g 1.0342 with 1 sample per line.  An input file can be created in
   the signal analysis tool Quorvane, and the output file imported into
   it, where an FFT validates the frequency response of the filter.
*/
)");
  append_line(out, "#include \"brisel_filt.c\"");
  append_line(out, "#include <stdio.h>\n#include <string.h>\n#include <stdlib.h>\n#include <math.h>\n");
  append_line(out, "#define INSZ1  1000");
  append_line(out, "#define OUTSZ1 1000\n");
  appendf(out, "static    %s x[INSZ1], y[OUTSZ1];\n\n\n", t.element());
  out += R"(int main(int argc, char *argv[])
{
   int   i, in_count, status;
   FILE *fin, *fout;

   fin  = stdin;
   fout = stdout;
   status = 1;

   fprintf(stderr," ***** start filter test *****\n");
   fprintf(stderr," usage: program [input file [output file]]\n");
   fprintf(stderr," samples are ASCII floating point values, 1 per line\n");

   if (argc > 1) {
      fin = fopen(argv[1],"rt");
      if (fin == NULL) {
         fprintf(stderr," error - Cannot open file\n %s\n for input\n",argv[1]);
         return 0;
      }
   }
   else
      fprintf(stderr," ***** waiting for input *****\n");

   if (argc > 2) {
      fout = fopen(argv[2],"wt");
      if (fout == NULL) {
         fprintf(stderr," error - Cannot open file\n %s\n for output\n",argv[2]);
         return 0;
      }
   }

)";
  appendf(out, "   %s( &%s );\n\n", t.init, variable.c_str());
  out += R"(   do {
      for (in_count = 0; in_count < INSZ1; in_count++) {
)";
  appendf(out, "         status = fscanf(fin,\"%%%s\",&x[in_count]);\n", letters);
  out += R"(         if (status != 1) break;
      }
      if (in_count == 0) break;

)";
  appendf(out, "      %s.filter( x, y, in_count, &%s);\n\n", variable.c_str(), variable.c_str());
  out += R"(      for (i = 0; i < in_count; i++)
         fprintf(fout,"%f\n",y[i]);
   } while (status == 1);

   fclose(fin);
   fclose(fout);
   fprintf(stderr," ***** end filter test *****\n");
   return 1;
}
#endif 
)";
}

void append_fir(std::string &out, const Target &t, const DesignRecord &r) {
  const FirEntry &fir = r.fir;
  append_array(out, t, "coeff", 0, std::span(fir.coeff).first(fir.length),
               [](std::size_t i) { return formatf("filter tap # %4d", static_cast<int>(i)); });
  const char *name = t.name.c_str();
  appendf(out, "%s %s_smpl[%d];  /* sample delay line */ \n\n", t.element(), name, fir.length);
  appendf(out, "%s %s_gain = %s; /* gain multiplier for FIR realization */\n\n", t.element(), name,
          value(t, fir.gain).c_str());
  appendf(out, "FIR_filter FIR_%s = {\n\n", name);
  // Kept: the quantization switch is always 0, and the scaling type carries the label of the quantization type.
  out += "     0,     /* quantization: 0 off, 1 on   */\n";
  appendf(out, "   %3d,     /* quantization type */\n", r.quantization.qtype);
  out += "            /*   0  floating point */\n";
  out += "            /*   1  fixed point fractional */\n";
  appendf(out, "   %3d,     /* quantization type */\n", fir.gain_option);
  out += "            /*   0  no scaling */\n";
  out += "            /*   1  center tap scaled to be above 0.5 and below 1.0 */\n";
  out += "            /*   2  center tap scaled to be 1.0 */\n";
  appendf(out, "   %d,           /* shift count - fixed point fractional */ \n", fir.shift);
  appendf(out, "   %d,           /* filter length */ \n", fir.length);
  out += "   0,            /* initial delay line index */\n";
  appendf(out, "   &%s_gain,  /* ptr to gain value          */\n", name);
  appendf(out, "   %s_coeff,  /* ptr to filter coefficients */\n", name);
  appendf(out, "   %s_smpl,   /* ptr to delay line */\n", name);
  appendf(out, "   %s}; /* ptr to filter routine */\n\n", t.routine);
}

// How a structure's arrays hold a section: the coefficients from index `first` on, all divided by what makes the ones
// before it 1.
struct SectionLayout {
  const char *routine;
  int first_b; // 0: b0, b1, b2; 1: b1, b2 with b0 = 1
  int first_a;
  int size_width; // of the delay lines' sizes
  bool arrays = true;
};

SectionLayout section_layout(bool parallel, bool quantized, int type) {
  if (!quantized) return parallel ? SectionLayout{"par_dbl_fm1", 0, 1, 3} : SectionLayout{"cas_dbl_fm2", 1, 1, 3};
  if (parallel) return type == 1 ? SectionLayout{"par_float_fm1", 0, 1, 3} : SectionLayout{"par_blkfloat_fm1", 0, 0, 0};
  switch (type) {
  case 0:
    return {"cas_blkfloat_fm1", 0, 0, 0};
  case 1:
    return {"cas_blkfloat_fm2", 0, 0, 0};
  case 2:
    return {"cas_float_4mul", 1, 1, 3};
  case 3:
    return {"cas_float_5mul", 0, 1, 3};
  default:
    return {"cas_recursive_normal", 0, 0, 0, false};
  }
}

struct SectionArrays {
  std::vector<double> numerator, denominator;
  double gain;
};

// False when a section's b0 is 0 where the structure takes it as 1.
bool section_arrays(const SectionEntry &sections, const SectionLayout &layout, SectionArrays &out) {
  out.gain = sections.gain;
  for (int k = 0; k < sections.section_count; k++) {
    Triple b = sections.numerators[k], a = sections.denominators[k];
    if (layout.first_a == 1) {
      for (double &v : b) v /= a[0];
      for (int i : {2, 1, 0}) a[i] /= a[0];
    }
    if (layout.first_b == 1) {
      if (b[0] == 0) return false;
      out.gain *= b[0];
      for (int i : {2, 1, 0}) b[i] /= b[0];
    }
    out.numerator.insert(out.numerator.end(), b.begin() + layout.first_b, b.end());
    out.denominator.insert(out.denominator.end(), a.begin() + layout.first_a, a.end());
  }
  return true;
}

void append_section_array(std::string &out, const Target &t, char letter, const std::vector<double> &values,
                          int first) {
  const std::size_t each = 3 - static_cast<std::size_t>(first);
  append_array(out, t, letter == 'b' ? "num" : "den", 3, values, [&](std::size_t i) {
    const std::size_t index = i + 1 == values.size() ? 2 : i % each + static_cast<std::size_t>(first);
    return formatf("%c[%3d, %d]", letter, static_cast<int>(i / each + 1), static_cast<int>(index));
  });
}

void append_sections(std::string &out, const Target &t, const DesignRecord &r, bool parallel,
                     const SectionLayout &layout, const SectionArrays &arrays) {
  const SectionEntry &s = parallel ? r.z_quantized.parallel : r.z_quantized.cascade;
  const char *name = t.name.c_str(), *element = t.element();
  if (layout.arrays) {
    append_section_array(out, t, 'b', arrays.numerator, layout.first_b);
    append_section_array(out, t, 'a', arrays.denominator, layout.first_a);
    appendf(out, "%s %s_m1[%*d];\n", element, name, layout.size_width, s.section_count);
    appendf(out, "%s %s_m2[%*d];\n\n", element, name, layout.size_width, s.section_count);
  }
  appendf(out, "%s %s_gain = %s; /* initial gain for cascade realization */\n", element, name,
          value(t, arrays.gain).c_str());
  out += "                          /* also applies to parallel realization */\n";
  appendf(out, "%s %s_pars = %s; /* scale value for parallel sections */\n\n", element, name, value(t, s.pars).c_str());
  appendf(out, "BiquadSections IIR_%s = {\n\n", name);
  const char *pad = t.is_float ? "      " : ""; // the float variant's comments stand further right
  const char *pointer = t.is_float ? "pointer to" : "ptr to";
  appendf(out, "   %3d,     %s/* number of sections */\n", s.section_count, pad);
  appendf(out, "   %3d,     %s/* realization method */\n", parallel ? 1 : 0, pad);
  appendf(out, "            %s/*   0  cascaded sections */\n", pad);
  appendf(out, "            %s/*   1  parallel sections */\n", pad);
  appendf(out, "     %d,     %s/* quantization: 0 off, 1 on   */\n", t.is_float ? 1 : 0, pad);
  // Kept: without quantization the three types are 0, 1 and 0 whatever the settings are.
  appendf(out, "   %3d,     %s/* quantization type */\n", t.is_float ? r.quantization.qtype : 0, pad);
  appendf(out, "            %s/*   0  floating point */\n", pad);
  appendf(out, "            %s/*   1  fixed point fractional */\n", pad);
  appendf(out, "   %3d,     %s/* realization type for cascaded sections */\n", t.is_float ? r.quantization.rtype1 : 1,
          pad);
  appendf(out, "            %s/*   0  Fixed point - transposed canonic */\n", pad);
  appendf(out, "            %s/*   1  Fixed point - canonic */\n", pad);
  appendf(out, "            %s/*   2  Floating point - 4 multiplies */\n", pad);
  appendf(out, "            %s/*   3  Floating point - 5 multiplies */\n", pad);
  if (t.is_float) appendf(out, "            %s/*   4  Floating point - recursive normal */\n", pad);
  appendf(out, "   %3d,     %s/* realization type for parallel sections */\n", t.is_float ? r.quantization.rtype2 : 0,
          pad);
  appendf(out, "   &%s_gain, %s/* %s gain */\n", name, pad, pointer);
  appendf(out, "   &%s_pars, %s/* %s scale value */\n", name, pad, pointer);
  appendf(out, "   %s_num,   %s/* %s numerator coefficients */\n", name, pad, pointer);
  appendf(out, "   %s_den,   %s/* %s denominator coefficients */\n", name, pad, pointer);
  appendf(out, "   %s_m1,    %s/* %s delay line 1 */\n", name, pad, pointer);
  appendf(out, "   %s_m2,    %s/* %s delay line 2 */\n", name, pad, pointer);
  appendf(out, "   %s}; %s/* %s filter routine */\n\n", t.routine, pad, pointer);
}

std::string index_label(std::size_t i) {
  return formatf("%4d", static_cast<int>(i));
}

void append_ratio(std::string &out, const Target &t, const DesignRecord &r) {
  const RatioEntry &ratio = r.z_quantized.ratio;
  const int count = std::max(ratio.numerator_order, ratio.denominator_order) + 1;
  // The structure has no place for a gain: the numerator takes it.
  std::vector<double> numerator(ratio.numerator.begin(), ratio.numerator.begin() + count);
  for (double &v : numerator) v *= ratio.gain;
  const char *name = t.name.c_str();
  append_array(out, t, "num", 0, numerator, index_label);
  append_array(out, t, "den", 0, std::span(ratio.denominator).first(count), index_label);
  appendf(out, "%s %s_buf[%d];\n\n", t.element(), name, count);
  appendf(out, "RT2_filter RT2_%s = {\n\n", name);
  appendf(out, "   %d,           /* filter length */ \n", count);
  appendf(out, "   %s_num,    /* ptr to numerator coefficients */\n", name);
  appendf(out, "   %s_den,    /* ptr to denominator coefficients */\n", name);
  appendf(out, "   %s_buf,    /* ptr to delay line */\n", name);
  appendf(out, "   %s}; /* ptr to filter routine */\n\n", t.routine);
}

void append_lattice(std::string &out, const Target &t, const DesignRecord &r) {
  const LatticeEntry &lattice = r.z_quantized.lattice;
  const int count = lattice.order + 1;
  const char *name = t.name.c_str();
  append_array(out, t, "kappa", 0, std::span(lattice.kappa).first(count), index_label);
  append_array(out, t, "gamma", 0, std::span(lattice.gamma).first(count), index_label);
  appendf(out, "%s %s_f[%d];\n\n", t.element(), name, count);
  appendf(out, "%s %s_b[%d];\n\n", t.element(), name, count);
  appendf(out, "%s %s_gain = %s; /* initial gain  */\n\n", t.element(), name, value(t, lattice.gain).c_str());
  appendf(out, "LAT_filter LAT_%s = {\n\n", name);
  // Kept: the quantization switch is always 1.
  out += "     1,     /* quantization: 0 off, 1 on   */\n";
  appendf(out, "   %3d,     /* quantization type */\n", r.quantization.qtype);
  appendf(out, "   %d,           /* lattice order */ \n", lattice.order);
  appendf(out, "   &%s_gain,  /* ptr to gain value */\n", name);
  appendf(out, "   %s_kappa,  /* ptr to kappa coefficients */\n", name);
  appendf(out, "   %s_gamma,  /* ptr to gamma coefficients */\n", name);
  appendf(out, "   %s_f,      /* ptr to forward function values */\n", name);
  appendf(out, "   %s_b,      /* ptr to backward function values */\n", name);
  appendf(out, "   %s};   /* ptr to filter routine */\n\n", t.routine);
}

} // namespace

Status format_c_code(const std::string &path, const DesignRecord &r, const std::string &user, const std::string &date,
                     const std::string &time, std::string &out) {
  const bool quantized = r.quantization.quant != 0;
  Target t{"", "", "", "", quantized, filter_name(path), true};
  const int method = r.selections.DesignOrAnalysisType;
  const bool fir =
      is_fir_method(method) || (method == code(DesignMethod::z_analysis) && is_fir_option(r.selections.z_input_option));
  const auto finish = [&](const auto &append_case) {
    append_preamble(out, t, path, user, date, time);
    append_case();
    append_test_program(out, t);
    if (t.finite) return success;
    out.clear();
    return not_finite;
  };
  out.clear();
  if (fir) {
    if (r.fir.fir_type == code(FirSymmetry::lattice)) return form_not_supported;
    t.prefix = "FIR";
    t.structure = "FIR_filter";
    t.init = quantized ? "init_fir_float" : "init_fir_dbl";
    t.routine = quantized ? "fir_float_reg" : "fir_dbl_reg";
    return finish([&] { append_fir(out, t, r); });
  }
  const RealizationForm form{r.realization};
  switch (form) {
  case RealizationForm::cascade:
  case RealizationForm::parallel: {
    const bool parallel = form == RealizationForm::parallel;
    const SectionLayout layout =
        section_layout(parallel, quantized, parallel ? r.quantization.rtype2 : r.quantization.rtype1);
    SectionArrays arrays;
    if (!section_arrays(parallel ? r.z_quantized.parallel : r.z_quantized.cascade, layout, arrays))
      return form_not_supported;
    t.prefix = "IIR";
    t.structure = "BiquadSections";
    t.init = quantized ? "init_biquad_float" : "init_biquad_dbl";
    t.routine = layout.routine;
    return finish([&] { append_sections(out, t, r, parallel, layout, arrays); });
  }
  case RealizationForm::ratio:
    t.prefix = "RT2";
    t.structure = "RT2_filter";
    t.init = quantized ? "init_rt2_float" : "init_rt2_dbl";
    t.routine = quantized ? "rt2_float" : "rt2_dbl";
    return finish([&] { append_ratio(out, t, r); });
  case RealizationForm::lattice:
    if (r.z_quantized.lattice.lead != 0) return form_not_supported;
    t.prefix = "LAT";
    t.structure = "LAT_filter";
    t.init = quantized ? "init_lat_float" : "init_lat_dbl";
    t.routine = quantized ? "lat_float" : "lat_dbl";
    return finish([&] { append_lattice(out, t, r); });
  default:
    return form_not_supported;
  }
}

int generate_c_code(const std::string &path, const DesignRecord &design, const std::string &user,
                    const std::string &date, const std::string &time) {
  std::string text, why;
  if (const Status status = format_c_code(path, design, user, date, time, text); status != success) return status;
  return save_file(path, std::move(text), why) ? success : cannot_create;
}

} // namespace brisel
