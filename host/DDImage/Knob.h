// SPDX-License-Identifier: BSD-3-Clause

// A control of a node: a value, which may be animated, that the host stores into the ops.
//
// Units:     times are frames.
// Ownership: a node owns its knobs. What store() points an op to stays valid until the next store.
// Threads:   main thread only.
#pragma once

#include <DDImage/DDImage_API.h>
#include <DDImage/Hash.h>
#include <DDImage/OutputContext.h>

#include <string>

class Node;

namespace DD::Image {

class Op;

enum KnobType {
    STRING_KNOB = 1,
    FILE_KNOB = 2,
    INT_KNOB = 3,
    ENUMERATION_KNOB = 4,
    BOOL_KNOB = 6,
    DOUBLE_KNOB = 7,
    FLOAT_KNOB = 8,
    CHANNEL_MASK_KNOB = 10,
    XY_KNOB = 12,
    XYZ_KNOB = 13,
    WH_KNOB = 14,
    FORMAT_KNOB = 17,
    COLOR_KNOB = 18,
    ACOLOR_KNOB = 19,
    TAB_KNOB = 20,
    AXIS_KNOB = 29,
    // The host's documentation gives no numbers for these.
    MATRIX_KNOB = 1001,
    TEXT_KNOB = 1002,
    DIVIDER_KNOB = 1003,
    NEWLINE_KNOB = 1004,
    BUTTON_KNOB = 1005,
    BEGIN_GROUP_KNOB = 1006,
    END_GROUP_KNOB = 1007,
};

// The type that a knob stores through its pointer.
enum StoreType {
    DoublePtr = 0,
    FloatPtr = 1,
    StringPtr = 2, // const char*
    IntPtr = 3,
    NoPtr = 4,
    BoolPtr = 5,
    ChannelSetPtr = 7,
    StdStringPtr = 8,
    FormatPairPtr = 9,
    MatrixPtr = 10,
};

class DDImage_API Knob {
public:
    typedef U64 FlagMask;

    // How a number or a menu is shown. The low bits have different meanings for the two.
    static constexpr FlagMask SLIDER = 0x1;
    static constexpr FlagMask SINGLE_SELECTION_ONLY = 0x1;
    static constexpr FlagMask FORCE_RANGE = 0x2;
    static constexpr FlagMask LOG_SLIDER = 0x4;
    static constexpr FlagMask STRIP_CASCADE_PREFIX = 0x4;
    static constexpr FlagMask STORE_INTEGER = 0x8;
    static constexpr FlagMask MAGNITUDE = 0x10;
    static constexpr FlagMask ANGLE = 0x20;
    static constexpr FlagMask NO_PROXYSCALE = 0x40;

    // What a user can do with the knob, and where it is in the panel.
    static constexpr FlagMask DISABLED = 0x80;
    static constexpr FlagMask NO_ANIMATION = 0x100;
    static constexpr FlagMask DO_NOT_WRITE = 0x200;
    static constexpr FlagMask INVISIBLE = 0x400;
    static constexpr FlagMask RESIZABLE = 0x800;
    static constexpr FlagMask STARTLINE = 0x1000;
    static constexpr FlagMask ENDLINE = 0x2000;

    // When the node renders and knob_changed() is called. NO_RERENDER keeps the value out of the
    // hash.
    static constexpr FlagMask NO_RERENDER = 0x4000;
    static constexpr FlagMask NO_HANDLES = 0x8000;
    static constexpr FlagMask KNOB_CHANGED_ALWAYS = 0x10000;
    static constexpr FlagMask NO_KNOB_CHANGED = 0x20000;

    // What is saved, undone and edited elsewhere.
    static constexpr FlagMask HIDDEN = 0x40000;
    static constexpr FlagMask NO_UNDO = 0x80000;
    static constexpr FlagMask ALWAYS_SAVE = 0x100000;
    static constexpr FlagMask NODE_KNOB = 0x200000;
    static constexpr FlagMask OUTPUT_ONLY = 0x400000;
    static constexpr FlagMask SAVE_MENU = 0x2000000;
    static constexpr FlagMask KNOB_CHANGED_RECURSIVE = 0x8000000;
    static constexpr FlagMask READ_ONLY = 0x10000000;
    static constexpr FlagMask NO_CURVE_EDITOR = 0x20000000;
    static constexpr FlagMask NO_MULTIVIEW = 0x40000000;

    // EARLY_STORE knobs are stored before the inputs are built, and may decide them.
    static constexpr FlagMask EARLY_STORE = 0x80000000;
    static constexpr FlagMask MODIFIES_GEOMETRY = 0x100000000;

    // Not of any node: events, for which knob_changed() is called with these.
    static Knob showPanel, hidePanel, inputChange;

    // Copies the name and the label, which may be null.
    explicit Knob(const char* name, const char* label = nullptr, KnobType type = STRING_KNOB);
    Knob(const Knob&) = delete;
    Knob& operator=(const Knob&) = delete;
    virtual ~Knob();

    // ---- what it is ----------------------------------------------------------------------------

    const std::string& name() const { return name_; }
    const std::string& label() const { return label_; } // the name by default
    bool is(const char* name) const { return name_ == name; }
    KnobType ClassID() const { return type_; }

    FlagMask flags() const { return flags_; }
    bool flag(FlagMask mask) const { return (flags_ & mask) != 0; }
    void set_flag(FlagMask mask) { flags_ |= mask; }
    void clear_flag(FlagMask mask) { flags_ &= ~mask; }
    void enable(bool on = true) { on ? clear_flag(DISABLED) : set_flag(DISABLED); }
    void disable() { set_flag(DISABLED); }
    bool enabled() const { return !flag(DISABLED); }
    void visible(bool on) { on ? clear_flag(INVISIBLE) : set_flag(INVISIBLE); }
    void show() { visible(true); }
    void hide() { visible(false); }
    bool isVisible() const { return !flag(INVISIBLE); }

    const std::string& tooltip() const { return tooltip_; }
    void tooltip(const std::string& text) { tooltip_ = text; }

    // ---- the value -----------------------------------------------------------------------------

    // The ends of the slider; values outside are legal.
    bool has_range() const { return has_range_; }
    double minimum() const { return minimum_; }
    double maximum() const { return maximum_; }
    void set_range(double minimum, double maximum);

    // The numbers of the value: how many, and number `i` at a time. Setting one, or all with i =
    // -1, removes the animation; returns false and changes nothing for values that the knob
    // refuses.
    virtual int size() const;
    virtual double get_value_at(double time, int i = 0) const;
    double get_value_at(const OutputContext& context, int i = 0) const {
        return get_value_at(context.frame(), i);
    }
    double get_value(int i = 0) const { return get_value_at(0.0, i); }
    virtual bool set_value(double value, int i = -1);
    bool set_values(const double* values, int count);
    virtual bool is_animated() const;
    bool isAnimated() const { return is_animated(); }

    // The value as text; null and false for knobs without.
    virtual const char* get_text() const;
    virtual bool set_text(const char* text);

    // As in a saved script. Returns false and changes nothing if the knob refuses the text.
    virtual bool from_script(const char* text);
    virtual std::string to_script() const;

    // Whether the value differs from the one that the knob was made with.
    virtual bool not_default() const;

    // Writes the value at the context's time to `data`, and adds it to `hash`.
    virtual void store(StoreType type, void* data, Hash& hash, const OutputContext& context);

private:
    std::string name_, label_, tooltip_;
    KnobType type_;
    FlagMask flags_ = 0;
    bool has_range_ = false;
    double minimum_ = 0, maximum_ = 1;
};

} // namespace DD::Image
