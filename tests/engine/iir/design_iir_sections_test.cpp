#include "engine/iir/design_iir_sections.h"

#include "engine/core/design_state.h"
#include "engine/core/trace.h"
#include "reference_filters.h"
#include "section_probe.h"
#include "tests/support/scripted_front_end.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace brisel;

namespace {

class DesignIirSections : public ::testing::Test {
protected:
  ScriptedFrontEnd front;

  void SetUp() override {
    choose_system_files({{SystemFile::Kind::memory, {}}, {SystemFile::Kind::null_device, {}}});
    reopen_system_files();
    trim_system_files();
    trace_on = 1;
    ask(FilterType::low_pass, {0.6}, {0.8});
  }
  void TearDown() override {
    trace_on = 0;
    close_system_files();
    choose_system_files({});
  }

  // Selects a design with a ripple of 0.5 dB and 60 dB of attenuation.
  void ask(FilterType band, std::array<double, 2> pass, std::array<double, 2> stop,
           AnalogPrototype family = AnalogPrototype::elliptic, ZTransform method = ZTransform::bilinear, int order = 0,
           int path = 0) {
    design_notes.clear();
    design_record.spec = {};
    design_record.selections = {};
    FilterSpec &spec = design_record.spec;
    spec.type = code(band);
    spec.sampling_frequency = two_pi;
    spec.passband_edge = pass;
    spec.stopband_edge = stop;
    spec.passband_ripple = 0.5;
    spec.stopband_ripple = 60;
    design_record.selections.filter_type = code(band);
    design_record.selections.analog_type = code(family);
    design_record.selections.ZTransformMethod = code(method);
    design_record.selections.order = static_cast<std::int16_t>(order);
    design_record.selections.ImpulseInvariantDesignPath = static_cast<std::uint8_t>(path);
  }
  std::string headings() {
    std::string found;
    const std::string text = trace_text();
    for (std::size_t i = 0; i < text.size(); i = text.find('\n', i) + 1) {
      const std::string line = text.substr(i, text.find('\n', i) - i);
      if (line.starts_with(" S Domain") || line.starts_with(" Z Domain")) found += line + "\n";
    }
    return found;
  }
  bool noted(const std::string &part) {
    return std::any_of(design_notes.begin(), design_notes.end(),
                       [&](const std::string &note) { return note.find(part) != std::string::npos; });
  }
};

double peak_difference(const std::vector<double> &a, const std::vector<double> &b) {
  double worst = 0;
  const double peak_a = *std::max_element(a.begin(), a.end()), peak_b = *std::max_element(b.begin(), b.end());
  for (std::size_t i = 0; i < a.size(); i++) worst = std::max(worst, std::fabs(a[i] / peak_a - b[i] / peak_b));
  return worst;
}

// The pole/zero system that matched Z or impulse invariance makes of an analog cascade, pole by pole, as magnitudes.
std::vector<Probe> analog_poles(const SectionEntry &e) {
  std::vector<Probe> poles;
  for (int i = 0; i < e.section_count; i++) {
    const auto [a, b, c] = e.denominators[i];
    if (a == 0) {
      poles.push_back(-static_cast<long double>(c) / b);
      continue;
    }
    const long double A = a, B = b, C = c;
    const Probe root = std::sqrt(Probe(B * B - 4 * A * C));
    poles.push_back((-B + root) / (2 * A));
    poles.push_back((-B - root) / (2 * A));
  }
  return poles;
}

// Direct term and residues of the analog cascade at its poles, and the samples of their exponentials at `step` as a
// function of z.
struct SampledSum {
  std::vector<Probe> poles, residues;
  Probe direct;
  explicit SampledSum(const SectionEntry &e) : poles(analog_poles(e)) {
    for (const Probe p : poles) {
      Probe r = e.gain;
      for (int i = 0; i < e.section_count; i++) {
        const long double leading = e.denominators[i][0] != 0 ? e.denominators[i][0] : e.denominators[i][1];
        r *= at(e.numerators[i], p) / leading;
      }
      for (const Probe q : poles)
        if (q != p) r /= p - q;
      residues.push_back(r);
    }
    direct = product_at(e, 1e12L);
  }
  Probe operator()(Probe z, long double step) const {
    Probe h = direct;
    for (std::size_t i = 0; i < poles.size(); i++) h += step * residues[i] / (1.0L - std::exp(poles[i] * step) / z);
    return h;
  }
};

constexpr std::array bands{FilterType::low_pass, FilterType::high_pass, FilterType::band_pass, FilterType::band_stop};
constexpr std::array<std::array<double, 2>, 4> pass_edges{{{0.6}, {1.9}, {0.9, 1.3}, {0.5, 1.5}}};
constexpr std::array<std::array<double, 2>, 4> stop_edges{{{0.8}, {1.6}, {0.75, 1.6}, {0.7, 1.2}}};
constexpr std::array families{AnalogPrototype::butterworth, AnalogPrototype::tschebyscheff,
                              AnalogPrototype::inverse_tschebyscheff, AnalogPrototype::elliptic,
                              AnalogPrototype::bessel};

} // namespace

TEST_F(DesignIirSections, ListsTheStagesInTheirOrder) {
  const std::string begin = " S Domain Normalized, wp = 0.855365\n S Domain Normalized, parallel form\n";
  const std::string end = " Z Domain Unnormalized: pole/zero form\n Z Domain Unnormalized: ratio form\n";
  struct Row {
    ZTransform method;
    int path;
    std::string stages;
  };
  const std::string analog = " S Domain Unnormalized: cascaded\n S Domain Unnormalized: parallel\n"
                             " S Domain Unnormalized: pole/zero\n S Domain Unnormalized: ratio\n";
  const std::string cascaded = " Z Domain Unnormalized: cascaded - reorder sections\n"
                               " Z Domain Unnormalized: cascaded - compute cas_gain\n"
                               " Z Domain Unnormalized: parallel form\n";
  const std::string summed = " Z Domain Unnormalized: parallel - regain\n Z Domain Unnormalized: cascaded form\n";
  const Row rows[] = {
      {ZTransform::bilinear, 0, analog + " Z Domain Unnormalized: cascaded - bilinear\n" + cascaded},
      {ZTransform::matched_z, 0, analog + " Z Domain Unnormalized: cascaded - matched Z\n" + cascaded},
      {ZTransform::impulse_invariant, 0,
       " Z Domain Normalized: parallel\n S Domain Unnormalized: parallel\n Z Domain Unnormalized: parallel\n" + summed},
      {ZTransform::impulse_invariant, 1, " Z Domain Normalized: parallel\n" + summed},
  };
  for (const Row &row : rows) {
    trim_system_files();
    ask(FilterType::low_pass, {0.6}, {0.8}, AnalogPrototype::elliptic, row.method, 5, row.path);
    ASSERT_TRUE(design_iir_sections());
    std::string expected = begin + row.stages + end;
    if (row.method != ZTransform::bilinear) // selectivity 0.75 without prewarping
      expected.replace(expected.find("0.855365"), 8, "0.866025");
    EXPECT_EQ(headings(), expected);
  }
}

TEST_F(DesignIirSections, OrderIsTheEstimateUnlessGiven) {
  ASSERT_TRUE(design_iir_sections());
  EXPECT_EQ(design_record.z.cascade.order, 7); // 7.06 at selectivity tan(0.3) / tan(0.4)
  design_record.selections.order = 4;
  ASSERT_TRUE(design_iir_sections());
  EXPECT_EQ(design_record.z.cascade.order, 4);
  EXPECT_NEAR(design_record.wp, std::sqrt(std::tan(0.3) / std::tan(0.4)), 1e-15);
}

TEST_F(DesignIirSections, CascadePeaksAtOneWithLeadingCoefficientsOfOne) {
  for (std::size_t b = 0; b < bands.size(); b++) {
    for (const AnalogPrototype family : families) {
      for (const ZTransform method : {ZTransform::bilinear, ZTransform::impulse_invariant, ZTransform::matched_z}) {
        for (const int path : {0, 1}) {
          ask(bands[b], pass_edges[b], stop_edges[b], family, method, 6, path);
          ASSERT_TRUE(design_iir_sections());
          const SectionEntry &e = design_record.z.cascade;
          const std::string what = std::string(analog_prototypes[code(family)].option) + " " +
                                   std::string(z_transforms[code(method)].option) + " " +
                                   std::string(filter_types[code(bands[b])].file_name);
          double peak = 0;
          for (int i = 0; i <= 1000; i++)
            peak = std::max(peak, static_cast<double>(std::abs(product_at(e, on_circle(std::numbers::pi * i / 1000)))));
          EXPECT_NEAR(peak, 1, 1e-12) << what;
          for (int i = 0; i < e.section_count; i++) {
            EXPECT_EQ(e.denominators[i][0], 1) << what;
            EXPECT_NE(e.numerators[i][0], 0) << what;
          }
          for (int i = 0; i < design_record.z.parallel.section_count; i++)
            EXPECT_NE(design_record.z.parallel.denominators[i][0], 0) << what;
        }
      }
    }
  }
}

TEST_F(DesignIirSections, GivesTheReferenceFilters) {
  for (const ReferenceFilter &f : reference_filters) {
    ask(f.band, f.passband, f.stopband, f.family, ZTransform::bilinear, f.order);
    ASSERT_TRUE(design_iir_sections());
    std::vector<double> got, expected;
    for (int i = 0; i <= 1500; i++) {
      // Half of the points where the passband is.
      const double w = i <= 500 ? std::numbers::pi * i / 500
                                : std::clamp(f.passband[0] + (f.passband[0] - f.stopband[0]) * (i - 1000) / 250, 0.0,
                                             std::numbers::pi);
      const Probe z = on_circle(w);
      Probe h = std::pow(z - 1.0L, f.zeros_at_1) * std::pow(z + 1.0L, f.zeros_at_minus_1);
      for (const auto &r : f.zeros) h *= (z - Probe(r)) * (r.imag() != 0 ? z - std::conj(Probe(r)) : 1.0L);
      for (const auto &r : f.poles) h /= (z - Probe(r)) * (r.imag() != 0 ? z - std::conj(Probe(r)) : 1.0L);
      expected.push_back(static_cast<double>(std::abs(h)));
      got.push_back(static_cast<double>(std::abs(product_at(design_record.z.cascade, z))));
    }
    EXPECT_LT(peak_difference(got, expected), 1e-9)
        << analog_prototypes[code(f.family)].option << " " << filter_types[code(f.band)].file_name << " " << f.order;
  }
}

// The analog filter is checked elsewhere; here its digital image, from its poles and zeros.
TEST_F(DesignIirSections, MatchedZHasTheImagesOfThePolesAndZeros) {
  for (std::size_t b = 0; b < bands.size(); b++) {
    for (const AnalogPrototype family : families) {
      for (const int order : {2, 6, 10, 20}) {
        ask(bands[b], pass_edges[b], stop_edges[b], family, ZTransform::matched_z, order);
        ASSERT_TRUE(design_iir_sections());
        const SectionEntry &analog = design_record.s_unnormalized.cascade;
        const bool finite_zeros =
            family == AnalogPrototype::inverse_tschebyscheff || family == AnalogPrototype::elliptic;
        const auto poles = analog_poles(analog);
        std::vector<Probe> zeros;
        SectionEntry numerators = analog;
        if (finite_zeros || bands[b] == FilterType::band_stop) {
          for (int i = 0; i < analog.section_count; i++)
            if (analog.numerators[i][0] != 0)
              numerators.denominators[zeros.size() / 2] = analog.numerators[i], zeros.resize(zeros.size() + 2);
          numerators.section_count = static_cast<std::int16_t>(zeros.size() / 2);
          zeros = analog_poles(numerators);
        }
        std::vector<double> got, expected;
        for (int i = 0; i <= 1000; i++) {
          const Probe z = on_circle(std::numbers::pi_v<long double> * i / 1000);
          Probe h = 1;
          for (const Probe p : poles) h /= z - std::exp(p);
          for (const Probe q : zeros) h *= z - std::exp(q);
          const int missing = static_cast<int>(poles.size() - zeros.size());
          if (bands[b] == FilterType::low_pass) h *= std::pow(z + 1.0L, missing);
          if (bands[b] == FilterType::high_pass) h *= std::pow(z - 1.0L, missing);
          // A zero at 0 stands in every section; 1 + z^-1 and 1 - z^-1 are added in turn.
          const int sections = missing / 2;
          if (bands[b] == FilterType::band_pass)
            h *= std::pow(z - 1.0L, sections + sections / 2) * std::pow(z + 1.0L, sections - sections / 2);
          expected.push_back(static_cast<double>(std::abs(h)));
          got.push_back(static_cast<double>(std::abs(product_at(design_record.z.cascade, z))));
        }
        EXPECT_LT(peak_difference(got, expected), 1e-9)
            << analog_prototypes[code(family)].option << " " << filter_types[code(bands[b])].file_name << " " << order;
      }
    }
  }
}

TEST_F(DesignIirSections, ImpulseInvarianceSamplesTheAnalogFilter) {
  for (std::size_t b = 0; b < bands.size(); b++) {
    for (const AnalogPrototype family : families) {
      for (const int order : {2, 6, 10, 20}) {
        ask(bands[b], pass_edges[b], stop_edges[b], family, ZTransform::impulse_invariant, order);
        ASSERT_TRUE(design_iir_sections());
        const SampledSum sampled(design_record.s_unnormalized.cascade);
        std::vector<double> cascade, parallel, expected;
        for (int i = 0; i <= 1000; i++) {
          const Probe z = on_circle(std::numbers::pi_v<long double> * i / 1000);
          expected.push_back(static_cast<double>(std::abs(sampled(z, 1))));
          cascade.push_back(static_cast<double>(std::abs(product_at(design_record.z.cascade, z))));
          parallel.push_back(static_cast<double>(std::abs(sum_at(design_record.z.parallel, z))));
        }
        const std::string what = std::string(analog_prototypes[code(family)].option) + " " +
                                 std::string(filter_types[code(bands[b])].file_name) + " " + std::to_string(order);
        EXPECT_LT(peak_difference(cascade, expected), 1e-9) << what;
        EXPECT_LT(peak_difference(parallel, expected), 1e-9) << what;
      }
    }
  }
}

TEST_F(DesignIirSections, ImpulseInvarianceByTheDigitalLowpass) {
  for (std::size_t b = 0; b < bands.size(); b++) {
    for (const AnalogPrototype family : families) {
      for (const int order : {2, 6, 10, 30}) { // at 30 the sums of Butterworth and Bessel terms need wide ones
        ask(bands[b], pass_edges[b], stop_edges[b], family, ZTransform::impulse_invariant, order, 1);
        ASSERT_TRUE(design_iir_sections());
        const SampledSum sampled(design_record.s_normalized.cascade);
        const long double tp = std::tan(static_cast<long double>(design_record.wp) * 0.01L / 2);
        const long double t1 = std::tan((pass_edges[b][0] + stop_edges[b][0]) / 4.0L);
        const long double t2 = std::tan((pass_edges[b][1] + stop_edges[b][1]) / 4.0L);
        std::vector<double> got, expected;
        for (int i = 1; i < 1000; i++) {
          const long double w = std::numbers::pi_v<long double> * i / 1000, t = std::tan(w / 2);
          const long double image = bands[b] == FilterType::low_pass    ? t / t1
                                    : bands[b] == FilterType::high_pass ? -t1 / t
                                    : bands[b] == FilterType::band_pass ? (t * t - t1 * t2) / (t * (t2 - t1))
                                                                        : t * (t2 - t1) / (t1 * t2 - t * t);
          expected.push_back(static_cast<double>(std::abs(sampled(on_circle(2 * std::atan(tp * image)), 0.01L))));
          got.push_back(static_cast<double>(std::abs(product_at(design_record.z.cascade, on_circle(w)))));
        }
        const std::string what = std::string(analog_prototypes[code(family)].option) + " " +
                                 std::string(filter_types[code(bands[b])].file_name) + " " + std::to_string(order);
        EXPECT_LT(peak_difference(got, expected), 1e-9) << what;
      }
    }
  }
}

TEST_F(DesignIirSections, OrdersUpTo200StayRight) {
  for (std::size_t b = 0; b < bands.size(); b++) {
    for (const AnalogPrototype family : families) {
      for (const int order : {64, 200}) {
        ask(bands[b], pass_edges[b], stop_edges[b], family, ZTransform::bilinear, order);
        const std::string what = std::string(analog_prototypes[code(family)].option) + " " +
                                 std::string(filter_types[code(bands[b])].file_name) + " " + std::to_string(order);
        ASSERT_TRUE(design_iir_sections())
            << what << " " << (front.posted.empty() ? 0 : int(front.posted.back().number));
        std::vector<double> got, expected;
        for (int i = 1; i < 1000; i++) {
          const long double w = std::numbers::pi_v<long double> * i / 1000;
          expected.push_back(static_cast<double>(
              std::abs(product_at(design_record.s_unnormalized.cascade, Probe(0, 2 * std::tan(w / 2))))));
          got.push_back(static_cast<double>(std::abs(product_at(design_record.z.cascade, on_circle(w)))));
        }
        EXPECT_LT(peak_difference(got, expected), 1e-9) << what;
      }
    }
  }
}

TEST_F(DesignIirSections, RefusesWhatCannotBeDesigned) {
  struct Row {
    const char *what;
    std::function<void()> change;
    Message number;
    const char *detail;
  };
  DesignState &s = design_record.selections;
  FilterSpec &spec = design_record.spec;
  const Row rows[] = {
      {"negative order", [&] { s.order = -1; }, Message::order_out_of_limits, "order -1"},
      {"order above 200", [&] { s.order = 201; }, Message::order_out_of_limits, "order 201"},
      {"odd order of a band filter",
       [&] {
         ask(FilterType::band_pass, {0.9, 1.3}, {0.75, 1.6}), s.order = 7;
       },
       Message::order_out_of_limits, "7"},
      {"estimate above 200", [&] { s.analog_type = 0, spec.stopband_edge[0] = 0.601; }, Message::order_out_of_limits,
       "the Butterworth prototype needs order"},
      {"edges the wrong way round", [&] { spec.stopband_edge[0] = 0.5; }, Message::impossible_specification,
       "selectivity"},
      {"edges the same", [&] { spec.stopband_edge[0] = 0.6; }, Message::impossible_specification, "is 1,"},
      {"attenuation below the ripple", [&] { spec.stopband_ripple = 0.2; }, Message::impossible_specification,
       "attenuation"},
      {"no such prototype", [&] { s.analog_type = 5; }, Message::method_not_available, ""},
      {"no such mapping", [&] { s.ZTransformMethod = 3; }, Message::method_not_available, ""},
      {"partial fractions of order 120", [&] { s.analog_type = 0, s.order = 120, s.ZTransformMethod = 1; },
       Message::partial_fractions_lost, ""},
      {"a ratio of order 100",
       [&] {
         s.analog_type = 0, s.order = 100, s.RealizationType = code(RealizationForm::ratio),
         spec.passband_edge[0] = 0.1;
       },
       Message::realization_lost, "keeps 0 digits"},
      {"an edge of 1e-9", [&] { spec.passband_edge[0] = 1e-9, spec.stopband_edge[0] = 2e-9; },
       Message::poles_on_unit_circle, ""},
  };
  for (const Row &row : rows) {
    ask(FilterType::low_pass, {0.6}, {0.8});
    front.posted.clear();
    row.change();
    EXPECT_FALSE(design_iir_sections()) << row.what;
    ASSERT_EQ(front.posted.size(), 1u) << row.what;
    EXPECT_EQ(front.posted[0].number, row.number) << row.what;
    EXPECT_NE(front.posted[0].detail.find(row.detail), std::string::npos) << row.what << ": " << front.posted[0].detail;
  }
}

TEST_F(DesignIirSections, TellsWhatTheUserShouldKnow) {
  ask(FilterType::low_pass, {0.6}, {0.8}, AnalogPrototype::bessel, ZTransform::bilinear, 23);
  ASSERT_TRUE(design_iir_sections());
  EXPECT_FALSE(noted("approximate"));
  ask(FilterType::low_pass, {0.6}, {0.8}, AnalogPrototype::bessel, ZTransform::bilinear, 24);
  ASSERT_TRUE(design_iir_sections());
  EXPECT_TRUE(noted("approximate"));
  ask(FilterType::low_pass, {0.6}, {0.6005});
  ASSERT_TRUE(design_iir_sections());
  EXPECT_FALSE(noted("ripple"));
  ask(FilterType::low_pass, {0.6}, {0.6005}, AnalogPrototype::elliptic, ZTransform::bilinear, 3);
  ASSERT_TRUE(design_iir_sections());
  EXPECT_TRUE(noted("order 3 has a passband ripple of 0.0605 dB, not the 0.5 dB asked for"));
  ask(FilterType::low_pass, {1e-5}, {2e-5}, AnalogPrototype::elliptic, ZTransform::bilinear);
  ASSERT_TRUE(design_iir_sections());
  EXPECT_TRUE(noted("hold the response to"));
  ask(FilterType::low_pass, {0.6}, {0.8}, AnalogPrototype::butterworth, ZTransform::impulse_invariant, 3);
  ASSERT_TRUE(design_iir_sections());
  EXPECT_TRUE(noted("delay"));
}
