// Placeholder until the requester core lands.
