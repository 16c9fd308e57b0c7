// SPDX-License-Identifier: BSD-3-Clause

// An operator: a node at one output context (frame and view), which makes the output.
//
// The host makes an op for each node and context that it needs. It then calls, in this order:
// setOutputContext; knobs() for the EARLY_STORE knobs; split_input and inputContext for every
// input, and set_input for every copy; knobs() for all knobs; append(); validate(false), any number
// of times; validate(true); request; open; engine from several threads; close. It may do so again
// for another context, or after knobs have changed.
//
// Ownership: the host owns the ops; inputs are borrowed.
// Errors:    error() reports what is wrong with the input; exceptions pass through the host.
// Threads:   one at a time, except engine, aborted() and error().
#pragma once

#include <DDImage/Description.h>
#include <DDImage/Hash.h>
#include <DDImage/Knobs.h>
#include <DDImage/OutputContext.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace DD::Image {

class Box;
class Format;
class Iop;
class NukeWrapper;

class DDImage_API Op {
public:
    // A class of ops. Its constructor, which runs while the plug-in is loaded, announces it to the
    // host; of several with one name the first counts.
    class DDImage_API Description : public DD::Image::Description {
    public:
        typedef Op* (*OpConstructor)(Node*);
        typedef Iop* (*IopConstructor)(Node*);

        const char* name;

        Description(const char* name, OpConstructor make, License* license = nullptr)
            : DD::Image::Description(&announced), name(name), make_op(make), make_iop(nullptr) {
            this->license = license;
            add();
        }
        Description(const char* name, const char* menu_ignored, OpConstructor make)
            : Description(name, make) {
            (void)menu_ignored;
        }
        Description(const char* name, const char* menu_ignored, IopConstructor make)
            : DD::Image::Description(&announced), name(name), make_op(nullptr), make_iop(make) {
            (void)menu_ignored;
            add();
        }
        Description(const Description&) = delete;
        Description& operator=(const Description&) = delete;
        ~Description();

        Op* constructor(Node* node) const;

        // The class of that name; null if none was announced.
        static const Description* find(const char* name);

    private:
        OpConstructor make_op;
        IopConstructor make_iop;

        static void announced(DD::Image::Description* description);
        void add();
    };

    // `node` may be null; then knob() returns null.
    explicit Op(Node* node);
    Op(const Op&) = delete;
    Op& operator=(const Op&) = delete;
    virtual ~Op();

    // ---- what it is ----------------------------------------------------------------------------

    // The class as in scripts, and its help text; the rest is for the user interface.
    virtual const char* Class() const = 0;
    virtual const char* node_help() const = 0;
    virtual const char* displayName() const { return Class(); }
    virtual const char* node_shape() const { return "box"; }
    virtual unsigned node_color() const { return 0; }
    virtual bool can_clone() const { return true; }
    virtual Iop* iop() { return nullptr; }

    Node* node() const { return node_; }
    const char* node_name() const; // without a node, the class

    // ---- knobs ---------------------------------------------------------------------------------

    // Declares the knobs, see Knobs.h.
    virtual void knobs(Knob_Callback f);

    // Called on the node's prototype after a user changed a knob. Returns 1 if it handled the
    // change and wants further calls.
    virtual int knob_changed(Knob* knob);
    virtual int knob_change_finished(Knob* knob, bool finished);

    // Null if there is none.
    Knob* knob(const char* name) const;

    // ---- inputs --------------------------------------------------------------------------------

    // How many inputs there are, and how many there may be.
    int inputs() const { return int(inputs_.size()); }
    virtual void inputs(int count);
    virtual int minimum_inputs() const { return inputs(); }
    virtual int maximum_inputs() const { return inputs(); }
    virtual int optional_input() const { return -1; }

    // Disconnects all copies of all inputs.
    void clear_inputs();

    // Copy `m`, or the first, of input `n`; null if there is none.
    Op* input(int n) const { return input(n, 0); }
    Op* input(int n, int m) const;

    // What the host asks about input `n`: whether it accepts `op`, what replaces a missing one, its
    // label (which may be written to `buffer`), how many copies it needs, and at which contexts.
    virtual bool test_input(int n, Op* op) const;
    virtual Op* default_input(int n) const;
    virtual const char* input_label(int n, char* buffer) const;
    virtual float uses_input(int n) const;
    virtual int split_input(int n) const;
    virtual const OutputContext& inputContext(int n, int m, OutputContext& scratch) const;

    // Connects copy `m` of input `n`, which is number `place` among all copies of all inputs.
    virtual void set_input(int place, Op* op, int n, int m);

    // ---- when ----------------------------------------------------------------------------------

    virtual void setOutputContext(const OutputContext& context);
    const OutputContext& outputContext() const { return context_; }

    // Adds whatever else the output depends on, besides knobs and inputs. The frame is not part of
    // the hash by itself: an op whose output changes with it must add it.
    virtual void append(Hash& hash);

    // Of class, inputs, knobs and append(), as last computed by the host.
    const Hash& hash() const { return hash_; }

    // ---- the cycle -----------------------------------------------------------------------------

    // Calls _validate, unless that was done for this hash.
    void validate(bool for_real = true);
    bool valid() const { return valid_ != Validity::none; }

    // Has the next validate() call _validate again, and forgets the last error; for this op, those
    // that it wraps, and those that wrap it.
    void invalidate();

    // open() opens every input, then this op; if _open throws, it closes them again. close() closes
    // the inputs, too.
    void open();
    void close();
    bool opened() const { return opened_; }

    // ---- stopping and failing ------------------------------------------------------------------

    // Whether the output is no longer needed.
    bool aborted() const;
    void abort() const;

    // Marks the op as failed. The last message is kept until invalidate(), which a new hash
    // implies.
    void error(const char* format, ...) __attribute__((format(printf, 2, 3)));
    bool has_error() const;
    std::string error_message() const;

    // The first op that failed, of this one and everything upstream; null if none did.
    Op* error_op();

    // Calls of error() since the op was made.
    int error_count() const;

    // The project's format; null for an op without a node.
    const Format* input_format() const;

    // No effect: ops are closed soon after the last engine anyway.
    void callCloseAfter(double seconds) { (void)seconds; }

    // No effect: there is no panel to redraw.
    void asapUpdate() {}
    void asapUpdate(const Box&, int direction = 0) { (void)direction; }

    // ---- the host's ----------------------------------------------------------------------------

    // Called by the tree that owns the op. A new hash invalidates the op; the flag aborts all ops.
    void set_hash(const Hash& hash);
    void set_abort_switch(std::atomic<bool>* flag) { abort_switch = flag; }

    // Copies a text, which stays valid until the next one for that place.
    const char* keep_text(const void* place, const std::string& text);

protected:
    virtual void _validate(bool for_real);
    virtual void _open();
    virtual void _close();
    virtual void _invalidate();

private:
    friend class NukeWrapper;
    enum class Validity { none, roughly, for_real };

    Node* node_;
    Op* wrapper = nullptr; // a NukeWrapper around this op
    Op* wrapped = nullptr; // the op inside, if this is one
    OutputContext context_;
    std::vector<std::vector<Op*>> inputs_; // by input and copy
    Hash hash_;
    Validity valid_ = Validity::none;
    bool opened_ = false;
    std::atomic<bool>* abort_switch = nullptr;
    mutable std::mutex error_lock;
    std::string error_;
    int errors_ = 0;
    std::vector<std::pair<const void*, std::unique_ptr<std::string>>> texts;

    const Op& outermost() const { return wrapper ? wrapper->outermost() : *this; }
    Op& outermost() { return wrapper ? wrapper->outermost() : *this; }
    void close_inputs();
    Op* error_op(std::set<const Op*>& seen);
};

} // namespace DD::Image
