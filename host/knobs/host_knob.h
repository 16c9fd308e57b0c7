// SPDX-License-Identifier: BSD-3-Clause

// The base of the host's knobs: the interface's Knob, with values for saved scripts and with checks
// of what is stored.
//
// Errors:    ScriptError from read(), PluginMisuse from store_into().
// Threads:   main thread only.
#pragma once

#include "host/script/script_text.h"

#include <DDImage/Knobs.h>
#include <DDImage/Op.h>

namespace velmora::host {

class DDImage_API HostKnob : public DD::Image::Knob {
public:
    explicit HostKnob(const DD::Image::KnobSpec& spec);

    // Whether the op declares it; false for the parts of another knob.
    bool declared() const { return declared_; }

    // Takes a value from a saved script; `script` is its name in messages. If the value is refused,
    // nothing changes.
    virtual void read(const ScriptValue& value, const std::string& script);

    // The value as read() accepts it.
    virtual ScriptValue script_value() const;

    bool from_script(const char* text) override;
    std::string to_script() const override;
    bool not_default() const override;

    // Whether a declaration has the type, store type and count of the one that made this knob.
    bool is_declared_as(const DD::Image::KnobSpec& spec) const;

    // Checks the type, then stores the value at the op's moment. Null `data` stores nothing.
    void store_into(DD::Image::Op& op, DD::Image::StoreType type, void* data,
                    DD::Image::Hash& hash);

protected:
    // Whether the value can be stored through a pointer of this type.
    virtual bool fits(DD::Image::StoreType type) const;

    // Knob::store at the op's moment, for knobs whose value the op must keep alive.
    virtual void put(DD::Image::Op& op, DD::Image::StoreType type, void* data,
                     DD::Image::Hash& hash);

    void set_declared(bool declared) { declared_ = declared; }

    // Call at the end of the constructor: not_default() compares with the value then.
    void remember_default();

private:
    DD::Image::StoreType store_type;
    int count;
    bool declared_ = true;
    ScriptValue made_with;
    bool remembered = false;
};

} // namespace velmora::host
