// SPDX-License-Identifier: BSD-3-Clause

// An op with a knob of every kind, and a node of it.
#pragma once

#include "host/runtime/node.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

class Panel : public DD::Image::Op {
public:
    int whole = 3;
    double real = 0.5;
    float single = 0.25f;
    bool on = true;
    float colour[3] = {1, 2, 3};
    double tint[4] = {1, 2, 3, 4};
    double point[2] = {5, 6};
    float place[3] = {7, 8, 9};
    int choice = 1;
    const char* file = "stars.dat";
    const char* text = nullptr; // none yet
    std::string words = "two words";
    DD::Image::FormatPair formats;
    DD::Image::ChannelSet channels = DD::Image::Mask_RGB;
    DD::Image::Matrix4 transform = DD::Image::Matrix4::identity();
    DD::Image::Matrix4 second = DD::Image::Matrix4::identity();

    explicit Panel(Node* node) : Op(node) { second.translation(1, 2, 3); }
    const char* Class() const override { return "Panel"; }
    const char* node_help() const override { return "Has knobs."; }

    void knobs(DD::Image::Knob_Callback f) override {
        static const char* const items[] = {"none", "one", "a few", nullptr};
        using namespace DD::Image;
        Int_knob(f, &whole, "whole");
        Double_knob(f, &real, "real");
        Float_knob(f, &single, "single");
        Bool_knob(f, &on, "on");
        Color_knob(f, colour, "colour");
        AColor_knob(f, tint, "tint");
        XY_knob(f, point, "point");
        XYZ_knob(f, place, "place");
        Enumeration_knob(f, &choice, items, "choice");
        File_knob(f, &file, "file");
        String_knob(f, &text, "text");
        String_knob(f, &words, "words");
        Format_knob(f, &formats, "format");
        Input_ChannelMask_knob(f, &channels, 0, "channels");
        Axis_knob(f, &transform, "transform");
        Axis_knob(f, &second, "second");
        Divider(f, "line");
        Button(f, "press");
    }
};

class PanelTest : public testing::Test {
protected:
    velmora::host::Project project;
    const DD::Image::Op::Description description{"Panel", &make};
    Node node{description, "P", project};

    velmora::host::HostKnob& knob(const char* name) { return *node.knob(name); }

    // What an op of the node is given at a frame.
    std::unique_ptr<Panel> stored(double frame = 1, DD::Image::Hash* hash = nullptr) {
        std::unique_ptr<DD::Image::Op> op = node.make_op();
        DD::Image::OutputContext context;
        context.setFrame(frame);
        op->setOutputContext(context);
        DD::Image::Hash own;
        node.store_all(*op, hash ? *hash : own);
        return std::unique_ptr<Panel>(static_cast<Panel*>(op.release()));
    }

    DD::Image::Hash hash_at(double frame) {
        DD::Image::Hash hash;
        stored(frame, &hash);
        return hash;
    }

    // Reads the value as in a saved script, at line 1, column 2.
    std::string read_error(const char* name, const std::string& text) {
        const velmora::host::ScriptValue list = {
            velmora::host::ScriptValue::Kind::braced, text, {1, 1}};
        const std::string before = knob(name).to_script();
        try {
            knob(name).read(velmora::host::list_items(list, "shot.nk").at(0), "shot.nk");
        } catch (const velmora::host::ScriptError& error) {
            EXPECT_EQ(knob(name).to_script(), before) << "changed all the same";
            return error.what();
        }
        return "no error";
    }

private:
    static DD::Image::Op* make(Node* node) { return new Panel(node); }
};
