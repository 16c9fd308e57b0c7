// An operator: one moment's worth of a node, that validates, opens and makes output.
//
// The host makes an op for each node and each moment that is asked of it, and then, in this order:
// setOutputContext; knobs() for the EARLY_STORE knobs; split_input and inputContext for every
// input, and set_input for every copy; knobs() for all knobs; append(); validate(false), as often
// as it likes; validate(true); request; open; engine from several threads; close. An op may be
// taken through this again at another moment or after its knobs have changed.
//
// Ownership: the host owns the ops; inputs are borrowed.
// Errors:    error() tells what is wrong with the input; exceptions pass through the host.
// Threads:   one at a time, but for engine, aborted() and error().
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
    // A class of ops. Making one, as the plug-in is loaded, tells the host of it; of several with
    // one name the first is kept.
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

        // The class of that name, among those announced so far; null when there is none.
        static const Description* find(const char* name);

    private:
        OpConstructor make_op;
        IopConstructor make_iop;

        static void announced(DD::Image::Description* description);
        void add();
    };

    // `node` may be null: the op then has no knobs that are kept.
    explicit Op(Node* node);
    Op(const Op&) = delete;
    Op& operator=(const Op&) = delete;
    virtual ~Op();

    // ---- what it is ----------------------------------------------------------------------------

    virtual const char* Class() const = 0;
    virtual const char* node_help() const = 0;
    virtual const char* displayName() const { return Class(); }
    virtual const char* node_shape() const { return "box"; }
    virtual unsigned node_color() const { return 0; }
    virtual bool can_clone() const { return true; }
    virtual Iop* iop() { return nullptr; }

    Node* node() const { return node_; }
    const char* node_name() const; // the class where there is no node

    // ---- knobs ---------------------------------------------------------------------------------

    virtual void knobs(Knob_Callback f);

    // Called on the op that stands for its node, after a knob was changed by hand. Returns 1 when
    // it handled the change and wants to hear of further ones.
    virtual int knob_changed(Knob* knob);
    virtual int knob_change_finished(Knob* knob, bool finished);

    Knob* knob(const char* name) const;

    // ---- inputs --------------------------------------------------------------------------------

    int inputs() const { return int(inputs_.size()); }
    virtual void inputs(int count);
    virtual int minimum_inputs() const { return inputs(); }
    virtual int maximum_inputs() const { return inputs(); }
    virtual int optional_input() const { return -1; }

    // Takes all copies out of all inputs.
    void clear_inputs();

    // Copy `m` of input `n`; null when nothing is there. Without `m` the first copy.
    Op* input(int n) const { return input(n, 0); }
    Op* input(int n, int m) const;

    virtual bool test_input(int n, Op* op) const;
    virtual Op* default_input(int n) const;
    virtual const char* input_label(int n, char* buffer) const;
    virtual float uses_input(int n) const;
    virtual int split_input(int n) const;
    virtual const OutputContext& inputContext(int n, int m, OutputContext& scratch) const;

    // Puts `op` into copy `m` of input `n`, which is number `place` of all copies of all inputs.
    virtual void set_input(int place, Op* op, int n, int m);

    // ---- when ----------------------------------------------------------------------------------

    virtual void setOutputContext(const OutputContext& context);
    const OutputContext& outputContext() const { return context_; }

    // What decides the output beside the knobs and the inputs. Frames do not count by themselves:
    // an op that differs from frame to frame for no other reason adds the frame here.
    virtual void append(Hash& hash);

    // Of class, knobs, inputs and append(), as the host made it last.
    const Hash& hash() const { return hash_; }

    // ---- the cycle -----------------------------------------------------------------------------

    // Calls _validate unless that was done for this hash already.
    void validate(bool for_real = true);
    bool valid() const { return valid_ != Validity::none; }

    // Makes the next validate() do its work again and forgets the last error, for this op and those
    // that it wraps or is wrapped by.
    void invalidate();

    // Open every input and then this op; what _open throws passes through and leaves them closed.
    // close() closes the inputs too.
    void open();
    void close();
    bool opened() const { return opened_; }

    // ---- stopping and failing ------------------------------------------------------------------

    // Whether the output is no longer wanted.
    bool aborted() const;
    void abort() const;

    // Marks the op as failed, printf style. The last message stays until the op is invalidated, as
    // it is when its hash changes.
    void error(const char* format, ...) __attribute__((format(printf, 2, 3)));
    bool has_error() const;
    std::string error_message() const;

    // This op or the first one among its inputs that has failed; null when none has.
    Op* error_op();

    // How often error() was called in the life of this op.
    int error_count() const;

    // Of the project; null for an op without a node.
    const Format* input_format() const;

    // Asks to be closed soon after the last engine, which is what happens in any case.
    void callCloseAfter(double seconds) { (void)seconds; }

    // Tells the panel to draw again, where there is one.
    void asapUpdate() {}
    void asapUpdate(const Box&, int direction = 0) { (void)direction; }

    // ---- the host's ----------------------------------------------------------------------------

    // Set by the tree that the op is part of: the hash anew, and the switch that stops all its ops.
    void set_hash(const Hash& hash);
    void set_abort_switch(std::atomic<bool>* flag) { abort_switch = flag; }

    // Keeps a text alive until the next one of that place is kept.
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
    Op* wrapper = nullptr; // that answers for this op
    Op* wrapped = nullptr; // for which this op answers
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
