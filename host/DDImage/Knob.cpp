// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/Knob.h>

namespace DD::Image {

Knob Knob::showPanel("showPanel");
Knob Knob::hidePanel("hidePanel");
Knob Knob::inputChange("inputChange");

Knob::Knob(const char* name, const char* label, KnobType type)
    : name_(name ? name : ""), label_(label ? label : name_), type_(type) {}

Knob::~Knob() {}

void Knob::set_range(double minimum, double maximum) {
    has_range_ = true;
    minimum_ = minimum;
    maximum_ = maximum;
}

// A knob without a value; the host's own knobs override what follows.

int Knob::size() const {
    return 0;
}

double Knob::get_value_at(double, int) const {
    return 0;
}

bool Knob::set_value(double, int) {
    return false;
}

bool Knob::set_values(const double* values, int count) {
    bool all = true;
    for (int i = 0; i < count; i++)
        all = set_value(values[i], i) && all;
    return all;
}

bool Knob::is_animated() const {
    return false;
}

const char* Knob::get_text() const {
    return nullptr;
}

bool Knob::set_text(const char*) {
    return false;
}

bool Knob::from_script(const char*) {
    return false;
}

std::string Knob::to_script() const {
    return "";
}

bool Knob::not_default() const {
    return false;
}

void Knob::store(StoreType, void*, Hash&, const OutputContext&) {}

} // namespace DD::Image
