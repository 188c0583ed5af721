// SPDX-License-Identifier: MIT
// STEP files (AP214) with one B-spline entity in a geometrically bounded shape representation. That
// is the least that readers accept as a part: the geometry in a set, the set in a representation
// with units, and the representation bound to a product. Knots are listed once each, with their
// multiplicities beside them.
#include "base/text.h"
#include "io/writers.h"

namespace knotfit {
namespace {

std::string logical(bool on) { return on ? ".T." : ".F."; }

template <class Items>
std::string list(const Items& items) {
  std::string out = "(";
  for (std::size_t i = 0; i < items.size(); ++i) out += (i ? "," : "") + items[i];
  return out + ")";
}

// Numbered instances, one a line. An instance is named by those behind it alone, so that references
// point backwards and the text can be read in one pass.
class Instances {
 public:
  // @return the reference "#n" of the new instance.
  std::string add(const std::string& body) {
    std::string name = cat("#", ++count_);
    text_ += name + "=" + body + ";\n";
    return name;
  }
  const std::string& text() const { return text_; }

 private:
  std::size_t count_ = 0;
  std::string text_;
};

// Distinct knots and how often each stands.
struct KnotLists {
  std::vector<std::string> values, times;
};

KnotLists knotLists(const std::vector<double>& knots) {
  KnotLists lists;
  for (std::size_t i = 0; i < knots.size();) {
    std::size_t end = i;
    while (end < knots.size() && knots[end] == knots[i]) ++end;
    lists.values.push_back(pointed(knots[i]));
    lists.times.push_back(cat(end - i));
    i = end;
  }
  return lists;
}

// Inches are no unit of the standard: they are told by their length in millimetres.
std::string lengthUnit(Instances& out, const std::string& units) {
  if (units == "in") {
    const std::string base = out.add("(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.))");
    const std::string dimensions = out.add("DIMENSIONAL_EXPONENTS(1.,0.,0.,0.,0.,0.,0.)");
    const std::string measure =
        out.add(cat("LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(25.4),", base, ")"));
    return out.add(cat("(CONVERSION_BASED_UNIT('INCH',", measure, ")LENGTH_UNIT()NAMED_UNIT(",
                       dimensions, "))"));
  }
  const char* prefix = units == "m" ? "$" : units == "cm" ? ".CENTI." : ".MILLI.";
  return out.add(cat("(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(", prefix, ",.METRE.))"));
}

// The representation context: units and how near two places may be.
std::string context(Instances& out, const std::string& units) {
  const std::string length = lengthUnit(out, units);
  const std::string angle = out.add("(NAMED_UNIT(*)PLANE_ANGLE_UNIT()SI_UNIT($,.RADIAN.))");
  const std::string solid = out.add("(NAMED_UNIT(*)SI_UNIT($,.STERADIAN.)SOLID_ANGLE_UNIT())");
  const std::string near = out.add(cat("UNCERTAINTY_MEASURE_WITH_UNIT(LENGTH_MEASURE(1.E-7),",
                                       length, ",'distance_accuracy_value','')"));
  return out.add(cat("(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNCERTAINTY_ASSIGNED_CONTEXT((",
                     near, "))GLOBAL_UNIT_ASSIGNED_CONTEXT((", length, ",", angle, ",", solid,
                     "))REPRESENTATION_CONTEXT('',''))"));
}

// The product that the shape belongs to. @return its shape definition.
std::string product(Instances& out) {
  const std::string application =
      out.add("APPLICATION_CONTEXT('core data for automotive mechanical design processes')");
  out.add(cat("APPLICATION_PROTOCOL_DEFINITION('international standard','automotive_design',2000,",
              application, ")"));
  const std::string how = out.add(cat("PRODUCT_CONTEXT('',", application, ",'mechanical')"));
  const std::string item = out.add(cat("PRODUCT('fit','fit','',(", how, "))"));
  out.add(cat("PRODUCT_RELATED_PRODUCT_CATEGORY('part',$,(", item, "))"));
  const std::string formation = out.add(cat("PRODUCT_DEFINITION_FORMATION('','',", item, ")"));
  const std::string stage =
      out.add(cat("PRODUCT_DEFINITION_CONTEXT('part definition',", application, ",'design')"));
  const std::string definition =
      out.add(cat("PRODUCT_DEFINITION('design','',", formation, ",", stage, ")"));
  return out.add(cat("PRODUCT_DEFINITION_SHAPE('','',", definition, ")"));
}

std::string point(Instances& out, const Spline& s, std::size_t i, std::size_t j) {
  const double* p = s.control(i, j);
  return out.add(cat("CARTESIAN_POINT('',(", pointed(p[0]), ",", pointed(p[1]), ",",
                     s.dim > 2 ? pointed(p[2]) : "0.", "))"));
}

std::string curveEntity(Instances& out, const Spline& s) {
  std::vector<std::string> points;
  for (std::size_t i = 0; i < s.size[0]; ++i) points.push_back(point(out, s, i, 0));
  const KnotLists k = knotLists(s.knots[0]);
  return out.add(cat("B_SPLINE_CURVE_WITH_KNOTS('',", s.degree[0], ",", list(points),
                     ",.UNSPECIFIED.,", logical(meetsItself(s, 0)), ",.F.,", list(k.times), ",",
                     list(k.values), ",.UNSPECIFIED.)"));
}

std::string surfaceEntity(Instances& out, const Spline& s) {
  std::vector<std::string> rows;
  for (std::size_t i = 0; i < s.size[0]; ++i) {
    std::vector<std::string> points;
    for (std::size_t j = 0; j < s.size[1]; ++j) points.push_back(point(out, s, i, j));
    rows.push_back(list(points));
  }
  const KnotLists u = knotLists(s.knots[0]), v = knotLists(s.knots[1]);
  return out.add(cat("B_SPLINE_SURFACE_WITH_KNOTS('',", s.degree[0], ",", s.degree[1], ",",
                     list(rows), ",.UNSPECIFIED.,", logical(meetsItself(s, 0)), ",",
                     logical(meetsItself(s, 1)), ",.F.,", list(u.times), ",", list(v.times), ",",
                     list(u.values), ",", list(v.values), ",.UNSPECIFIED.)"));
}

}  // namespace

std::string stepText(const Spline& s) {
  Instances out;
  const std::string shape = product(out);
  const std::string where = context(out, s.units);
  const std::string entity = s.isCurve() ? curveEntity(out, s) : surfaceEntity(out, s);
  const std::string set =
      out.add(cat(s.isCurve() ? "GEOMETRIC_CURVE_SET" : "GEOMETRIC_SET", "('',(", entity, "))"));
  const std::string representation =
      out.add(cat("GEOMETRICALLY_BOUNDED_", s.isCurve() ? "WIREFRAME" : "SURFACE",
                  "_SHAPE_REPRESENTATION('',(", set, "),", where, ")"));
  out.add(cat("SHAPE_DEFINITION_REPRESENTATION(", shape, ",", representation, ")"));
  return cat("ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('B-spline fit'),'2;1');\n",
             "FILE_NAME('fit','2000-01-01T00:00:00',(''),(''),'knotfit','knotfit','');\n",
             "FILE_SCHEMA(('AUTOMOTIVE_DESIGN { 1 0 10303 214 1 1 1 1 }'));\nENDSEC;\nDATA;\n",
             out.text(), "ENDSEC;\nEND-ISO-10303-21;\n");
}

}  // namespace knotfit
