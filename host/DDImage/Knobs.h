// SPDX-License-Identifier: BSD-3-Clause

// How an op declares its knobs: one call for each, in the order of the panel.
//
// The host calls Op::knobs() once to make the knobs of a node, and then each time it stores their
// values into an op. Each creator returns the knob that it declares; Tooltip, SetFlags, ClearFlags
// and SetRange modify the one declared before them, while knobs are made.
//
// Shapes:    an op must declare the same knobs in the same order each time.
// Ownership: names and labels are copied. The pointers to store through must be to members of the
//            op.
// Threads:   main thread only.
#pragma once

#include <DDImage/ChannelSet.h>
#include <DDImage/Format.h>
#include <DDImage/Knob.h>
#include <DDImage/Matrix4.h>

#include <string>

namespace DD::Image {

struct IRange {
    double minimum, maximum;
    IRange(double minimum, double maximum) : minimum(minimum), maximum(maximum) {}
};

typedef const char* NAME;
typedef const char* LABEL;

// The declaration of a knob.
struct KnobSpec {
    KnobType type;
    StoreType store;
    void* data; // null for knobs that store nothing
    const char* name;
    const char* label = nullptr;
    int count = 1; // of numbers at `data`
    const char* const* items = nullptr;
    const IRange* range = nullptr;
};

class DDImage_API Knob_Closure {
public:
    virtual ~Knob_Closure();

    // Whether this pass makes the knobs rather than stores them.
    virtual bool makeKnobs() const = 0;

    // Knobs declared so far.
    virtual int getKnobCount() const = 0;

    virtual Knob* declare(const KnobSpec& spec) = 0;

    // The knob declared last, while knobs are made; null otherwise.
    virtual Knob* made_last() = 0;
};

typedef Knob_Closure& Knob_Callback;

DDImage_API Knob* Int_knob(Knob_Callback, int*, NAME, LABEL = nullptr);
DDImage_API Knob* Int_knob(Knob_Callback, int*, const IRange&, NAME, LABEL = nullptr);
DDImage_API Knob* Float_knob(Knob_Callback, float*, NAME, LABEL = nullptr);
DDImage_API Knob* Float_knob(Knob_Callback, float*, const IRange&, NAME, LABEL = nullptr);
DDImage_API Knob* Float_knob(Knob_Callback, double*, NAME, LABEL = nullptr);
DDImage_API Knob* Float_knob(Knob_Callback, double*, const IRange&, NAME, LABEL = nullptr);
DDImage_API Knob* Double_knob(Knob_Callback, double*, NAME, LABEL = nullptr);
DDImage_API Knob* Double_knob(Knob_Callback, double*, const IRange&, NAME, LABEL = nullptr);
DDImage_API Knob* Bool_knob(Knob_Callback, bool*, NAME, LABEL = nullptr);

// Three numbers: red, green, blue; AColor four, with alpha.
DDImage_API Knob* Color_knob(Knob_Callback, float*, NAME, LABEL = nullptr);
DDImage_API Knob* Color_knob(Knob_Callback, float*, const IRange&, NAME, LABEL = nullptr);
DDImage_API Knob* Color_knob(Knob_Callback, double*, NAME, LABEL = nullptr);
DDImage_API Knob* Color_knob(Knob_Callback, double*, const IRange&, NAME, LABEL = nullptr);
DDImage_API Knob* AColor_knob(Knob_Callback, float*, NAME, LABEL = nullptr);
DDImage_API Knob* AColor_knob(Knob_Callback, double*, NAME, LABEL = nullptr);

DDImage_API Knob* XY_knob(Knob_Callback, float*, NAME, LABEL = nullptr);
DDImage_API Knob* XY_knob(Knob_Callback, double*, NAME, LABEL = nullptr);
DDImage_API Knob* XYZ_knob(Knob_Callback, float*, NAME, LABEL = nullptr);
DDImage_API Knob* XYZ_knob(Knob_Callback, double*, NAME, LABEL = nullptr);
DDImage_API Knob* WH_knob(Knob_Callback, float*, NAME, LABEL = nullptr);
DDImage_API Knob* WH_knob(Knob_Callback, double*, NAME, LABEL = nullptr);

// A menu of `items`, ended by a null pointer. Stores the index; scripts hold the text.
DDImage_API Knob* Enumeration_knob(Knob_Callback, int*, const char* const* items, NAME,
                                   LABEL = nullptr);

enum FileKnob_Type {
    Normal_File,
    Read_File_Proxy,
    Write_File_Proxy,
    Geo_File,
    Write_File_Normal,
    Script_File,
};

// The host owns the text, which is valid until the next store. It may be null at first.
DDImage_API Knob* File_knob(Knob_Callback, const char**, NAME, LABEL = nullptr,
                            FileKnob_Type = Normal_File);
DDImage_API Knob* String_knob(Knob_Callback, const char**, NAME, LABEL = nullptr);
DDImage_API Knob* String_knob(Knob_Callback, std::string*, NAME, LABEL = nullptr);

DDImage_API Knob* Format_knob(Knob_Callback, FormatPair*, NAME, LABEL = nullptr);
DDImage_API Knob* Input_ChannelMask_knob(Knob_Callback, ChannelSet*, int input, NAME,
                                         LABEL = nullptr);

// An affine transformation whose parts are the knobs translate, rotate, xform_order and so on; if
// this one is not named "transform", they are named "<name>_translate" and so on.
DDImage_API Knob* Axis_knob(Knob_Callback, Matrix4*, NAME, LABEL = nullptr);

// These only arrange the panel.
DDImage_API Knob* Text_knob(Knob_Callback, const char* text);
DDImage_API Knob* Text_knob(Knob_Callback, const char* label, const char* text);
DDImage_API Knob* Named_Text_knob(Knob_Callback, NAME, const char* text);
DDImage_API Knob* Divider(Knob_Callback, LABEL = "");
DDImage_API Knob* Newline(Knob_Callback, LABEL = "");
DDImage_API Knob* Tab_knob(Knob_Callback, LABEL = nullptr);
DDImage_API Knob* Button(Knob_Callback, NAME, LABEL = nullptr);
DDImage_API Knob* BeginGroup(Knob_Callback, NAME, LABEL = nullptr);
DDImage_API Knob* BeginClosedGroup(Knob_Callback, NAME, LABEL = nullptr);
DDImage_API Knob* EndGroup(Knob_Callback);

DDImage_API void Tooltip(Knob_Callback, const char*);
DDImage_API void Tooltip(Knob_Callback, const std::string&);
DDImage_API void SetFlags(Knob_Callback, Knob::FlagMask);
DDImage_API void ClearFlags(Knob_Callback, Knob::FlagMask);
DDImage_API void SetRange(Knob_Callback, double minimum, double maximum);
DDImage_API void SetRange(Knob_Callback, const IRange&);

} // namespace DD::Image
