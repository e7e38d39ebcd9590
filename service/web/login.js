"use strict";

// The token goes in a header, so that no log and no history of a browser holds it; the answer's cookie keeps it.
document.getElementById("form").addEventListener("submit", async (event) => {
  event.preventDefault();
  const message = document.getElementById("message");
  message.textContent = "";
  try {
    const token = document.getElementById("token").value.trim();
    const answer = await fetch("session", {headers: {Authorization: "Bearer " + token}});
    if (answer.ok) {
      location.replace("/");
    } else {
      message.textContent = answer.status === 401 ? "This is not the token of this unit." : "The service refuses this.";
    }
  } catch {
    message.textContent = "The service can't be reached.";
  }
});
