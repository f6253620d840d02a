// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Linux/ControlSink.h"
#include "Unlock/Linux/Mnemonics.h"
#include "Unlock/Linux/SecretField.h"

#include <QWidget>
#include <cstddef>
#include <optional>

namespace marrowby {

/// A view can be reused for a row with the same key: kind and control.
struct RowKey {
    std::size_t kind = 0;
    std::optional<ControlID> id;
    friend bool operator==(const RowKey&, const RowKey&) = default;

    [[nodiscard]] static RowKey of(const WindowRow& row);
};

class RowView : public QWidget {
  public:
    [[nodiscard]] static RowView* create(const WindowRow& row, ControlSink& sink, QWidget* parent);

    /// `row` must have this view's key.
    virtual void show(const WindowRow& row, Mnemonics& keys) = 0;
    /// The row's text field, if any.
    [[nodiscard]] virtual QWidget* field() const { return nullptr; }
    [[nodiscard]] virtual SecretField* secretField() const { return nullptr; }

    /// How high the visible part of the page is; a picture is no higher.
    virtual void setRoom(int /*height*/) {}

    [[nodiscard]] const RowKey& key() const { return key_; }
    /// Whether it shares a card with its neighbours.
    [[nodiscard]] bool isOnCard() const { return isOnCard_; }

  protected:
    RowView(const WindowRow& row, bool isOnCard, QWidget* parent)
        : QWidget(parent), key_(RowKey::of(row)), isOnCard_(isOnCard) {}

  private:
    const RowKey key_;
    const bool isOnCard_;
};

}  // namespace marrowby
