// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/Knobs.h>

namespace DD::Image {

Knob_Closure::~Knob_Closure() {}

// `count` numbers at one pointer, with or without a slider's range.
static Knob* numbers(Knob_Callback f, KnobType type, StoreType store, void* data, int count,
                     NAME name, LABEL label, const IRange* range = nullptr) {
    KnobSpec spec = {type, store, data, name, label};
    spec.count = count;
    spec.range = range;
    return f.declare(spec);
}

// A knob that stores nothing.
static Knob* arrangement(Knob_Callback f, KnobType type, NAME name, LABEL label) {
    return f.declare({type, NoPtr, nullptr, name, label});
}

// ---- numbers ------------------------------------------------------------------------------------

Knob* Int_knob(Knob_Callback f, int* p, NAME name, LABEL label) {
    return numbers(f, INT_KNOB, IntPtr, p, 1, name, label);
}

Knob* Int_knob(Knob_Callback f, int* p, const IRange& range, NAME name, LABEL label) {
    return numbers(f, INT_KNOB, IntPtr, p, 1, name, label, &range);
}

Knob* Float_knob(Knob_Callback f, float* p, NAME name, LABEL label) {
    return numbers(f, FLOAT_KNOB, FloatPtr, p, 1, name, label);
}

Knob* Float_knob(Knob_Callback f, float* p, const IRange& range, NAME name, LABEL label) {
    return numbers(f, FLOAT_KNOB, FloatPtr, p, 1, name, label, &range);
}

Knob* Float_knob(Knob_Callback f, double* p, NAME name, LABEL label) {
    return numbers(f, FLOAT_KNOB, DoublePtr, p, 1, name, label);
}

Knob* Float_knob(Knob_Callback f, double* p, const IRange& range, NAME name, LABEL label) {
    return numbers(f, FLOAT_KNOB, DoublePtr, p, 1, name, label, &range);
}

Knob* Double_knob(Knob_Callback f, double* p, NAME name, LABEL label) {
    return numbers(f, DOUBLE_KNOB, DoublePtr, p, 1, name, label);
}

Knob* Double_knob(Knob_Callback f, double* p, const IRange& range, NAME name, LABEL label) {
    return numbers(f, DOUBLE_KNOB, DoublePtr, p, 1, name, label, &range);
}

Knob* Bool_knob(Knob_Callback f, bool* p, NAME name, LABEL label) {
    return numbers(f, BOOL_KNOB, BoolPtr, p, 1, name, label);
}

Knob* Color_knob(Knob_Callback f, float* p, NAME name, LABEL label) {
    return numbers(f, COLOR_KNOB, FloatPtr, p, 3, name, label);
}

Knob* Color_knob(Knob_Callback f, float* p, const IRange& range, NAME name, LABEL label) {
    return numbers(f, COLOR_KNOB, FloatPtr, p, 3, name, label, &range);
}

Knob* Color_knob(Knob_Callback f, double* p, NAME name, LABEL label) {
    return numbers(f, COLOR_KNOB, DoublePtr, p, 3, name, label);
}

Knob* Color_knob(Knob_Callback f, double* p, const IRange& range, NAME name, LABEL label) {
    return numbers(f, COLOR_KNOB, DoublePtr, p, 3, name, label, &range);
}

Knob* AColor_knob(Knob_Callback f, float* p, NAME name, LABEL label) {
    return numbers(f, ACOLOR_KNOB, FloatPtr, p, 4, name, label);
}

Knob* AColor_knob(Knob_Callback f, double* p, NAME name, LABEL label) {
    return numbers(f, ACOLOR_KNOB, DoublePtr, p, 4, name, label);
}

Knob* XY_knob(Knob_Callback f, float* p, NAME name, LABEL label) {
    return numbers(f, XY_KNOB, FloatPtr, p, 2, name, label);
}

Knob* XY_knob(Knob_Callback f, double* p, NAME name, LABEL label) {
    return numbers(f, XY_KNOB, DoublePtr, p, 2, name, label);
}

Knob* XYZ_knob(Knob_Callback f, float* p, NAME name, LABEL label) {
    return numbers(f, XYZ_KNOB, FloatPtr, p, 3, name, label);
}

Knob* XYZ_knob(Knob_Callback f, double* p, NAME name, LABEL label) {
    return numbers(f, XYZ_KNOB, DoublePtr, p, 3, name, label);
}

Knob* WH_knob(Knob_Callback f, float* p, NAME name, LABEL label) {
    return numbers(f, WH_KNOB, FloatPtr, p, 2, name, label);
}

Knob* WH_knob(Knob_Callback f, double* p, NAME name, LABEL label) {
    return numbers(f, WH_KNOB, DoublePtr, p, 2, name, label);
}

// ---- menus, texts and others --------------------------------------------------------------------

Knob* Enumeration_knob(Knob_Callback f, int* p, const char* const* items, NAME name, LABEL label) {
    KnobSpec spec = {ENUMERATION_KNOB, IntPtr, p, name, label};
    spec.items = items;
    return f.declare(spec);
}

// The type decides which file browser a panel opens; there is no panel here.
Knob* File_knob(Knob_Callback f, const char** p, NAME name, LABEL label, FileKnob_Type) {
    return f.declare({FILE_KNOB, StringPtr, p, name, label});
}

Knob* String_knob(Knob_Callback f, const char** p, NAME name, LABEL label) {
    return f.declare({STRING_KNOB, StringPtr, p, name, label});
}

Knob* String_knob(Knob_Callback f, std::string* p, NAME name, LABEL label) {
    return f.declare({STRING_KNOB, StdStringPtr, p, name, label});
}

Knob* Format_knob(Knob_Callback f, FormatPair* p, NAME name, LABEL label) {
    return f.declare({FORMAT_KNOB, FormatPairPtr, p, name, label});
}

// The input's channels are the items of a menu in a panel; every set is legal.
Knob* Input_ChannelMask_knob(Knob_Callback f, ChannelSet* p, int, NAME name, LABEL label) {
    return f.declare({CHANNEL_MASK_KNOB, ChannelSetPtr, p, name, label});
}

Knob* Axis_knob(Knob_Callback f, Matrix4* p, NAME name, LABEL label) {
    return f.declare({AXIS_KNOB, MatrixPtr, p, name, label});
}

// ---- the panel ----------------------------------------------------------------------------------

Knob* Text_knob(Knob_Callback f, const char* text) {
    return arrangement(f, TEXT_KNOB, "", text);
}

Knob* Text_knob(Knob_Callback f, const char* label, const char* text) {
    Knob* const knob = arrangement(f, TEXT_KNOB, "", label);
    if (f.makeKnobs() && text)
        knob->tooltip(text);
    return knob;
}

Knob* Named_Text_knob(Knob_Callback f, NAME name, const char* text) {
    return arrangement(f, TEXT_KNOB, name, text);
}

Knob* Divider(Knob_Callback f, LABEL label) {
    return arrangement(f, DIVIDER_KNOB, "", label);
}

Knob* Newline(Knob_Callback f, LABEL label) {
    return arrangement(f, NEWLINE_KNOB, "", label);
}

Knob* Tab_knob(Knob_Callback f, LABEL label) {
    return arrangement(f, TAB_KNOB, "", label);
}

Knob* Button(Knob_Callback f, NAME name, LABEL label) {
    return arrangement(f, BUTTON_KNOB, name, label);
}

Knob* BeginGroup(Knob_Callback f, NAME name, LABEL label) {
    return arrangement(f, BEGIN_GROUP_KNOB, name, label);
}

Knob* BeginClosedGroup(Knob_Callback f, NAME name, LABEL label) {
    return arrangement(f, BEGIN_GROUP_KNOB, name, label);
}

Knob* EndGroup(Knob_Callback f) {
    return arrangement(f, END_GROUP_KNOB, "", nullptr);
}

// ---- about the knob before ----------------------------------------------------------------------

// Only while knobs are made; later passes have no last knob.

void Tooltip(Knob_Callback f, const char* text) {
    if (Knob* const knob = f.made_last())
        knob->tooltip(text ? text : "");
}

void Tooltip(Knob_Callback f, const std::string& text) {
    Tooltip(f, text.c_str());
}

void SetFlags(Knob_Callback f, Knob::FlagMask flags) {
    if (Knob* const knob = f.made_last())
        knob->set_flag(flags);
}

void ClearFlags(Knob_Callback f, Knob::FlagMask flags) {
    if (Knob* const knob = f.made_last())
        knob->clear_flag(flags);
}

void SetRange(Knob_Callback f, double minimum, double maximum) {
    if (Knob* const knob = f.made_last())
        knob->set_range(minimum, maximum);
}

void SetRange(Knob_Callback f, const IRange& range) {
    SetRange(f, range.minimum, range.maximum);
}

} // namespace DD::Image
