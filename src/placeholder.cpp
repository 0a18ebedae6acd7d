// Keeps the module buildable until its first source.
