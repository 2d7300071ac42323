// Working memory of FittedWarp, kept between calls.
#pragma once

#include "FittedWarp.h"

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

/// Working memory of finished calls to Render, kept for later calls on the same object: page faults on fresh memory
/// would take up to a sixth of a call's time. Thread-safe.
class FittedWarp::IdleMemory {
public:
    struct Piece {
        virtual ~Piece() = default;
        /// Returns whether the piece is small enough to be kept.
        virtual bool IsModest() const { return true; }
    };

    /// Returns a kept piece or a new one.
    template <typename Kind> std::unique_ptr<Kind> Take()
    {
        std::unique_ptr<Piece> piece;
        {
            const std::lock_guard<std::mutex> guard(m_lock);
            if (!m_pieces.empty()) {
                piece = std::move(m_pieces.back());
                m_pieces.pop_back();
            }
        }
        if (dynamic_cast<Kind *>(piece.get()))
            return std::unique_ptr<Kind>(static_cast<Kind *>(piece.release()));
        return std::make_unique<Kind>();
    }

    void Keep(std::unique_ptr<Piece> piece)
    {
        if (!piece->IsModest())
            return;
        const std::lock_guard<std::mutex> guard(m_lock);
        m_pieces.push_back(std::move(piece));
    }

private:
    std::mutex m_lock;
    std::vector<std::unique_ptr<Piece>> m_pieces;
};
