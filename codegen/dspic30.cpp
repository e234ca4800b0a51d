#include "codegen/dspic30.h"

#include "codegen/dsp_checks.h"
#include "codegen/filter_name.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/front_end.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace brisel {

namespace {

constexpr int taps_per_line = 9;
constexpr int example_samples = 20;

// What the three kinds of filter call their parts.
struct Kind {
  const char *structure; // C type
  const char *init;
  const char *block;
  const char *routines; // assembly file of the routines, without extension
  const char *include;
};
constexpr Kind fir_kind{"FIRFilterStructure", "FIRFilterInit", "BlockFIRFilter", "FIR_Filter", "FIR_Filter.h"};
constexpr Kind transposed_kind{"IIRTransposeFilter", "IIRTransposeFilterInit", "BlockIIRTransposeFilter", "IIRT_Filter",
                               "IIR_Filter.h"};
constexpr Kind canonic_kind{"IIRCanonicFilter", "IIRCanonicFilterInit", "BlockIIRCanonicFilter", "IIRC_Filter",
                            "IIR_Filter.h"};

struct Source {
  const CoefficientFile &image;
  const Kind &kind;
  std::string stem;   // last component of the base name, which the files are called by
  std::string prefix; // of the symbols
  CoefficientSpace space;
  int samples;

  bool in_program_space() const { return space == CoefficientSpace::program; }
};

unsigned short word(std::int64_t value) {
  return static_cast<unsigned short>(low_word(value));
}

void append_banner(std::string &out, const Source &s) {
  const std::string dots = "; " + std::string(74, '.') + "\n";
  out += dots;
  appendf(out, ";    File   %s.s\n", s.stem.c_str());
  out += dots;
}

void append_coefficient_section(std::string &out, const Source &s) {
  if (s.in_program_space())
    appendf(out, "\t\t.section .%sconst, \"x\"\n", s.prefix.c_str());
  else
    out += "\t\t.section .xdata\n";
}

void append_calling_program(std::string &out, const Source &s) {
  const char *p = s.prefix.c_str();
  out += "; Sample assembly language calling program\n";
  appendf(out, ";\t\t.extern\t_%s\n;\t\t.extern\t_%s\n;\t\t.extern\t_%sFilter\n", s.kind.init, s.kind.block, p);
  out += ";\n;\t\t.section .bss,  \"b\"\n";
  out += "; The example 40 is just an example - 20 samples of 2 bytes each\n";
  out += ";input:\t\t.space\t40\n";
  out += ";output:\t.space\t40\n";
  out += ";\n;\t\t.section .text\n";
  out += "; Initalize the filter - call once\n";
  appendf(out, ";\t\tmov\t#_%sFilter, W0\t; W0 points to the filter structure\n", p);
  appendf(out, ";\t\tcall\t_%s\n", s.kind.init);
  out += "; Filter a block of samples\n";
  appendf(out, ";\t\tmov\t#_%sFilter, W0\t; W0 points to the filter structure\n", p);
  out += ";\t\tmov\t#input, W1\t; W1 points to the input samples\n";
  out += ";\t\tmov\t#output, W2\t; W2 points to the output samples\n";
  appendf(out, ";\t\tmov\t#%d, W3\t; W3 is the number of output samples\n", example_samples);
  appendf(out, ";\t\tcall\t_%s\n", s.kind.block);
}

// Bytes of the tap table, rounded up to a power of two for modulo addressing.
int alignment(int taps) {
  return static_cast<int>(std::bit_ceil(2u * static_cast<unsigned>(taps)));
}

void append_coefficient_address(std::string &out, const Source &s, const char *table, const char *data_page) {
  const char *p = s.prefix.c_str();
  if (s.in_program_space())
    appendf(out, ".hword psvoffset(%s%s)\n.hword psvpage(%s%s)\n", p, table, p, table);
  else
    appendf(out, ".hword %s%s\n.hword %s\n", p, table, data_page);
}

std::string fir_assembly(const Source &s) {
  std::string out;
  const char *p = s.prefix.c_str();
  append_banner(out, s);
  appendf(out, "\t\t.equ %sNumTaps, %d\n", p, s.image.count);
  out += "; Allocate and initialize filter taps\n";
  append_coefficient_section(out, s);
  appendf(out, "\t\t.align %d\n%sTaps:\n", alignment(s.image.count), p);
  for (int i = 0; i < s.image.count; i++) {
    if (i % taps_per_line == 0) out += ".hword ";
    const bool ends_line = i % taps_per_line == taps_per_line - 1 || i == s.image.count - 1;
    appendf(out, ends_line ? "\t0x%04hX\n" : "\t0x%04hX,", word(s.image.integers[static_cast<std::size_t>(i)]));
  }
  out += "; Allocate delay line in (uninitialized) Y data space\n\t\t.section .ybss,  \"b\"\n";
  appendf(out, "\t\t.align %d\n%sDelay:\n\t\t.space %sNumTaps*2\n", alignment(s.image.count), p, p);
  out += "; Allocate and intialize filter structure\n\t\t.section .data\n";
  appendf(out, "\t\t.global _%sFilter\n_%sFilter:\n.hword %sNumTaps\n", p, p, p);
  if (s.in_program_space())
    appendf(out, ".hword psvoffset(%sTaps)\n.hword psvoffset(%sTaps)+%sNumTaps*2-1\n.hword psvpage(%sTaps)\n", p, p, p,
            p);
  else
    appendf(out, ".hword %sTaps\n.hword %sTaps+%sNumTaps*2-1\n.hword 0xff00\n", p, p, p);
  appendf(out, ".hword %sDelay\n.hword %sDelay+%sNumTaps*2-1\n.hword %sDelay\n", p, p, p, p);
  append_calling_program(out, s);
  return out;
}

std::string iir_assembly(const Source &s, bool transposed) {
  std::string out;
  const char *p = s.prefix.c_str();
  append_banner(out, s);
  appendf(out, "\t\t.equ %sNumSections, %d\n", p, s.image.section_count);
  out += "; Allocate and initialize filter coefficients\n";
  appendf(out, "; These coefficients have been designed for use in the %s filter only\n",
          transposed ? "Transpose" : "Canonic");
  append_coefficient_section(out, s);
  appendf(out, "%sCoefs:\n", p);
  for (int k = 1; k <= s.image.section_count; k++) {
    const SectionWords w = section_words(s.image.section_integers[static_cast<std::size_t>(k - 1)]);
    const auto line = [&](std::int64_t value, char letter, int index, int divisor) {
      appendf(out, ".hword\t0x%04hX\t; %c(%2d,%d)/%d\n", word(value), letter, k, index, divisor);
    };
    if (transposed) {
      line(w.b0, 'b', 0, 2);
      line(w.b1, 'b', 1, 2);
      line(-w.a1, 'a', 1, 2);
      line(w.b2, 'b', 2, 2);
      line(-w.a2, 'a', 2, 2);
    } else {
      const int divisor = 1 << w.exponent;
      line(-w.a2, 'a', 2, 2);
      line(-w.a1, 'a', 1, 2);
      line(w.b2, 'b', 2, divisor);
      line(w.b1, 'b', 1, divisor);
      line(w.b0, 'b', 0, divisor);
    }
  }
  out += "; Allocate states buffers in (uninitialized) Y data space\n\t\t.section .ybss,  \"b\"\n";
  if (transposed)
    appendf(out, "%sStates1:\n\t\t.space %sNumSections*2\n%sStates2:\n\t\t.space %sNumSections*2\n", p, p, p, p);
  else
    appendf(out, "%sStates:\n\t\t.space %sNumSections*2*2\n", p, p);
  out += "; Allocate and intialize filter structure\n\t\t.section .data\n";
  appendf(out, "\t\t.global _%sFilter\n_%sFilter:\n", p, p);
  appendf(out, transposed ? ".hword %sNumSections-1\n" : ".hword %sNumSections\n", p);
  append_coefficient_address(out, s, "Coefs", "0xFF00");
  appendf(out, transposed ? ".hword %sStates1\n.hword %sStates2\n" : ".hword %sStates\n", p, p);
  appendf(out, ".hword 0x%04hX\n", word(-final_shift(s.image, 0)));
  append_calling_program(out, s);
  return out;
}

std::string c_header(const Source &s) {
  std::string out;
  const char *p = s.prefix.c_str();
  appendf(out, "#ifndef %s_H\n#define %s_H\nextern %s %sFilter;\n#endif /* %s_H */\n", p, p, s.kind.structure, p, p);
  out += "\n/* The following C-code fragment demonstrates how to call the filter routine\n\n";
  appendf(out, "#include \"%s\"\n#include \"%s.h\"\n\n", s.kind.include, s.stem.c_str());
  out += "// NUM_SAMPLES is the number of samples in a block;\n// any number will do\n";
  appendf(out, "#define NUM_SAMPLES %d\n\n", example_samples);
  out += "int  inSamples[NUM_SAMPLES], outSamples[NUM_SAMPLES];\n\n";
  out += "// initialize the filter - call once\n";
  appendf(out, "%s( &%sFilter );\n\n", s.kind.init, p);
  out += "// filter a block of samples - call for each block\n";
  const char *format = &s.kind == &transposed_kind ? "%s( &%sFilter, &inSamples[0], &outSamples[0], NUM_SAMPLES );\n"
                                                   : "%s( &%sFilter, &inSamples, &outSamples, NUM_SAMPLES );\n";
  appendf(out, format, s.kind.block, p);
  return out + "*/\n";
}

std::string simulation_program(const Source &s) {
  std::string out;
  const char *p = s.prefix.c_str();
  appendf(out, "#include <stdio.h>\n#include <stdlib.h>\n#include \"%s\"\n#include \"%s.h\"\n\n", s.kind.include,
          s.stem.c_str());
  appendf(out, "#define NUM_SAMPLES %d\n#define NUM_BLOCKS 10\n", s.samples);
  out += "#define NUM_SAMPLES_PER_BLOCK (NUM_SAMPLES-1)/NUM_BLOCKS+1\n\n";
  out += "int inSamples[NUM_SAMPLES_PER_BLOCK], outSamples[NUM_SAMPLES_PER_BLOCK];\n\n";
  out += "int main(void)\n{\n   int i, j;\n   FILE *file;\n\n";
  appendf(out, "   file = fopen(\"%s_impresponse.dat\",\"wt\");\n   if (file == NULL) abort();\n\n", s.stem.c_str());
  appendf(out, "   %s( &%sFilter );\n\n   inSamples[0] = 0x7FFF;\n", s.kind.init, p);
  appendf(out, "   %s( &%sFilter, &inSamples[0], &outSamples[0], 1 );\n", s.kind.block, p);
  out += "   fprintf(file,\"%g\\n\",outSamples[0]/32768.);\n\n";
  out += "   for (j = 0; j < NUM_SAMPLES_PER_BLOCK; j++) inSamples[j] = 0;\n\n";
  out += "   for (i = 0; i < NUM_BLOCKS; i++) {\n";
  appendf(out, "      %s( &%sFilter, &inSamples[0], &outSamples[0], NUM_SAMPLES_PER_BLOCK );\n", s.kind.block, p);
  out += "      for (j = 0; j < NUM_SAMPLES_PER_BLOCK; j++)\n";
  out += "         fprintf(file,\"%g\\n\",outSamples[j]/32768.);\n   }\n\n";
  return out + "   fclose(file);\n   return 0;\n}\n";
}

std::string build_file(const Source &s) {
  std::string out = "@rem This batch file builds and runs dsPIC30 filter code generated by Brisel.\n"
                    "@rem PATH must name the folder of the pic30 tools,\n"
                    "@rem C_INCLUDE_PATH the folder of their header files and\n"
                    "@rem LD_LIBRARY_PATH the folder of their libraries.\n";
  const char *stem = s.stem.c_str(), *routines = s.kind.routines;
  appendf(out, "pic30-as -o %s.o %s.s\n", routines, routines);
  appendf(out, "pic30-as -o %s.o %s.s\n", stem, stem);
  appendf(out, "pic30-gcc -c -o %s_sim.o %s_sim.c\n", stem, stem);
  appendf(out,
          "pic30-ld -defsym HEAPSIZE=4096 -L%%LD_LIBRARY_PATH%% %s_sim.o %s.o %s.o -lsxl -lpic30 -lsoftfloat -o "
          "%s_sim.cof -Map %s_sim.map\n",
          stem, stem, routines, stem, stem);
  appendf(out, "pic30-bin2hex %s_sim.cof\n", stem);
  appendf(out, "simpic30 %s_sim.cmd\n", stem);
  return out;
}

std::string simulator_commands(const Source &s) {
  return "lp " + s.stem + "_sim.hex\nrp\ne\nq\n"; // load, reset, run to the end, leave
}

std::string plot_script(const Source &s, bool octave) {
  std::string out;
  // The variable that the loaded file becomes: its name with what is no letter or digit replaced.
  std::string variable = s.stem;
  for (char &c : variable)
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  const char quote = octave ? '"' : '\'';
  const auto labelled = [&](const char *function, const std::string &text) {
    out += std::string(function) + "(" + quote + text + quote + ");\n";
  };
  const double rate = s.image.sampling_frequency / two_pi;
  appendf(out, "fs = %.0f;\n", std::round(rate));
  out += octave ? "load -force \"" + s.stem + "_impresponse.dat\";\n" : "load '" + s.stem + "_impresponse.dat';\n";
  out += "y = " + variable + "_impresponse;\n";
  const bool milliseconds = (s.samples - 1) / rate < 1.0;
  out += milliseconds ? "x = [0:size(y,1)-1]/fs*1000;\n" : "x = [0:size(y,1)-1]/fs;\n";
  const std::string time_label = milliseconds ? "Time (Milliseconds)" : "Time (Seconds)";
  out += "x = x.';\nz = abs(fft(y,4096));\nz = z(1:size(z,1)/2);\nstep = size(z,1)-1;\nw=[0:fs/2/step:fs/2];\n";
  if (octave) out += "gset multiplot\ngset nokey;\n";
  out += "subplot(2,1,1), plot(x,y);\n";
  labelled("xlabel", time_label);
  labelled("ylabel", "Impulse Response (" + s.stem + ")");
  out += "grid;\nsubplot(2,1,2), plot(w,20*log10(z));\n";
  labelled("xlabel", "Frequency(Hz)");
  labelled("ylabel", "dB");
  return out;
}

std::string last_component(const std::string &path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

} // namespace

bool is_usable_base_name(const std::string &base) {
  const std::string stem = last_component(base);
  for (const Kind &kind : {fir_kind, transposed_kind, canonic_kind})
    if (stem == kind.routines || stem + ".h" == kind.include) return false;
  return !stem.empty() && std::isalpha(static_cast<unsigned char>(stem[0])) && std::ranges::all_of(stem, [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || std::string_view("_.-").find(c) != std::string_view::npos;
  });
}

std::vector<GeneratedFile> format_dspic30(const std::string &base, const CoefficientFile &image,
                                          const DsPic30Options &options, int samples) {
  const bool fir = image.variant == CoefficientVariant::fir;
  const bool transposed = image.scaling == ScalingCode::cascade_1;
  const Kind &kind = fir ? fir_kind : transposed ? transposed_kind : canonic_kind;
  const Source source{image, kind, last_component(base), filter_name(base), options.space, samples};
  std::vector<GeneratedFile> files;
  if (options.header || options.simulation) files.push_back({base + ".h", c_header(source)});
  if (options.simulation) {
    files.push_back({base + "_sim.c", simulation_program(source)});
    files.push_back({base + "_sim.cmd", simulator_commands(source)});
    files.push_back({base + "_make.bat", build_file(source)});
  }
  if (options.script != PlotScript::none) {
    const bool octave = options.script == PlotScript::octave;
    files.push_back({base + (octave ? "_octave.m" : "_matlab.m"), plot_script(source, octave)});
  }
  if (options.assembly) files.push_back({base + ".s", fir ? fir_assembly(source) : iir_assembly(source, transposed)});
  return files;
}

int prepare_dspic30(const std::string &base, const DsPic30Options &options, std::vector<GeneratedFile> &files,
                    std::string *note) {
  if (!is_usable_base_name(base)) {
    post_message(Message::bad_base_name, base);
    return static_cast<int>(Message::bad_base_name);
  }
  if (const int status = load_design_through(base); status != success) return status;
  const auto why = misfit(coefficient_file, DspFamily::dspic30);
  if (!why) {
    files = format_dspic30(base, coefficient_file, options, plot_arrays.time_count);
    if (note) *note = gain_note(coefficient_file, DspFamily::dspic30).value_or("");
  }
  release_coefficient_file();
  if (!why) return success;
  post_message(Message::dsp_word_misfit, *why);
  return static_cast<int>(Message::dsp_word_misfit);
}

} // namespace brisel
