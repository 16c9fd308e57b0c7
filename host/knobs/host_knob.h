// A knob as the host keeps it: with the texts of saved scripts, and watched as it is stored.
//
// Errors:    ScriptError from read, PluginMisuse from store_into.
#pragma once

#include "host/script/script_text.h"

#include <DDImage/Knobs.h>
#include <DDImage/Op.h>

namespace velmora::host {

class DDImage_API HostKnob : public DD::Image::Knob {
public:
    explicit HostKnob(const DD::Image::KnobSpec& spec);

    // Whether the op declared it, rather than the host as a part of another.
    bool declared() const { return declared_; }

    // Takes over a value of a saved script; `script` is the script's name in messages. Nothing
    // changes when the value is refused.
    virtual void read(const ScriptValue& value, const std::string& script);

    // The value as read() takes it.
    virtual ScriptValue script_value() const;

    bool from_script(const char* text) override;
    std::string to_script() const override;
    bool not_default() const override;

    // Whether a declaration is of the kind that this knob was made from.
    bool is_declared_as(const DD::Image::KnobSpec& spec) const;

    // Knob::store, for a type that fits.
    void store_into(DD::Image::Op& op, DD::Image::StoreType type, void* data,
                    DD::Image::Hash& hash);

protected:
    // Whether the value can be put behind such a pointer.
    virtual bool fits(DD::Image::StoreType type) const;

    // Knob::store at the op's moment; the op may keep what the pointer points to.
    virtual void put(DD::Image::Op& op, DD::Image::StoreType type, void* data,
                     DD::Image::Hash& hash);

    void set_declared(bool declared) { declared_ = declared; }

    // To be called when the knob is made: not_default() compares with this.
    void remember_default();

private:
    DD::Image::StoreType store_type;
    int count;
    bool declared_ = true;
    ScriptValue made_with;
    bool remembered = false;
};

} // namespace velmora::host
